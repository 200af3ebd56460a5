# Checks that LIBRARY needs nothing at run time but libc and the project's own libraries, and has no
# thread-local storage: in a library that was loaded late the loader allocates it when a thread first gets there, and
# ends the process when it cannot.

execute_process(COMMAND "${READELF}" -d "${LIBRARY}" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "[][]" " " output "${output}")  # brackets would join elements of a list
string(REGEX MATCHALL "\\(NEEDED\\)[^\n]+" needed "${output}")
if(NOT needed)
  message(FATAL_ERROR "${READELF} finds no needed libraries in ${LIBRARY}")
endif()

list(TRANSFORM needed STRIP)
list(TRANSFORM needed REPLACE ".* " "")
list(FILTER needed EXCLUDE REGEX "^libc\\.so\\.6$")
list(FILTER needed EXCLUDE REGEX "^lib(dbgtrace|bitbuffer|h264|h265)\\.so\\.[0-9]+$")
if(needed)
  message(FATAL_ERROR "${LIBRARY} must not need: ${needed}")
endif()

execute_process(COMMAND "${READELF}" -lW "${LIBRARY}" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
if(NOT output MATCHES "\n +LOAD ")
  message(FATAL_ERROR "${READELF} finds no segments in ${LIBRARY}")
endif()
if(output MATCHES "\n +TLS ")
  message(FATAL_ERROR "${LIBRARY} must not have thread-local storage")
endif()
