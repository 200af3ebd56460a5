include(CheckCXXCompilerFlag)

# How gcc for x86-64 clears records: by rep stos, unless told otherwise, which takes longer to begin than memset
# takes for all of most records.
set(H265_CLEAR_BY_MEMSET -mmemset-strategy=libcall:-1:noalign)
check_cxx_compiler_flag(${H265_CLEAR_BY_MEMSET} H265_CAN_CLEAR_BY_MEMSET)

# h265_add_library(<name> SOURCES <file>... [DEPENDS <library>...] [INCLUDES <dir>...])
#
# One of the project's libraries, from one set of objects: <name> (shared) and <name>_static. Outside the
# build tree they are h265::<name> and h265::<name>_static, inside as well.
function(h265_add_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;DEPENDS;INCLUDES")

  add_library(${name}_objects OBJECT ${arg_SOURCES})
  target_include_directories(
    ${name}_objects PRIVATE "${PROJECT_SOURCE_DIR}/components/include"
                            "${PROJECT_SOURCE_DIR}/components/libraries/common" ${arg_INCLUDES})
  target_link_libraries(${name}_objects PRIVATE h265_warnings)
  target_compile_options(${name}_objects PRIVATE -fno-exceptions -fno-rtti -fno-threadsafe-statics)
  if(H265_CAN_CLEAR_BY_MEMSET)
    target_compile_options(${name}_objects PRIVATE ${H265_CLEAR_BY_MEMSET})
  endif()
  if(H265_BUILD_FUZZERS)
    target_compile_options(${name}_objects PRIVATE -O1) # more inputs in the same time
  endif()
  set_target_properties(
    ${name}_objects
    PROPERTIES POSITION_INDEPENDENT_CODE ON
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON)

  add_library(${name} SHARED $<TARGET_OBJECTS:${name}_objects>)
  # The libraries find each other where they are installed, whatever the prefix.
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                                           INSTALL_RPATH "$ORIGIN")
  if(NOT H265_SANITIZED)
    target_link_options(${name} PRIVATE -Wl,-z,defs)
  endif()

  add_library(${name}_static STATIC $<TARGET_OBJECTS:${name}_objects>)
  set_target_properties(${name}_static PROPERTIES OUTPUT_NAME ${name})

  foreach(suffix "" _static)
    # Linked as C: the objects use the headers of the C++ standard library, and nothing of its run time.
    set_target_properties(${name}${suffix} PROPERTIES LINKER_LANGUAGE C)
    target_include_directories(
      ${name}${suffix} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/components/include>
                                 $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    foreach(depends IN LISTS arg_DEPENDS)
      target_link_libraries(${name}${suffix} PUBLIC ${depends}${suffix})
    endforeach()
    add_library(h265::${name}${suffix} ALIAS ${name}${suffix})
  endforeach()

  install(
    TARGETS ${name} ${name}_static
    EXPORT h265-targets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
endfunction()
