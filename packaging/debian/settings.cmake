# The settings of a build for Debian packages: cmake -C this file, before the preset's own. ARCHITECTURE is Debian's
# name of the one that the packages are for.

if(ARCHITECTURE STREQUAL "amd64")
  set(libdir lib/x86_64-linux-gnu)
elseif(ARCHITECTURE STREQUAL "arm64")
  set(libdir lib/aarch64-linux-gnu)
else()
  message(FATAL_ERROR "ARCHITECTURE is \"${ARCHITECTURE}\": only amd64 and arm64 are known")
endif()

set(CMAKE_INSTALL_PREFIX /usr CACHE PATH "")
set(CMAKE_INSTALL_LIBDIR ${libdir} CACHE STRING "")
# The headers' names are too general for /usr/include itself.
set(CMAKE_INSTALL_INCLUDEDIR include/h265syntax CACHE STRING "")
set(CMAKE_INSTALL_DOCDIR share/doc/h265syntax-doc CACHE STRING "")
set(CMAKE_SKIP_INSTALL_RPATH ON CACHE BOOL "")

# Debian's hardening.
set(hardening "-fstack-protector-strong -D_FORTIFY_SOURCE=2")
set(CMAKE_C_FLAGS "${hardening}" CACHE STRING "")
set(CMAKE_CXX_FLAGS "${hardening}" CACHE STRING "")
set(CMAKE_SHARED_LINKER_FLAGS "-Wl,-z,relro,-z,now" CACHE STRING "")
set(CMAKE_EXE_LINKER_FLAGS "-pie -Wl,-z,relro,-z,now" CACHE STRING "")

set(H265_BUILD_TESTS OFF CACHE BOOL "")
set(H265_BUILD_EXAMPLES OFF CACHE BOOL "")
set(H265_DEBIAN_PACKAGES ON CACHE BOOL "")
