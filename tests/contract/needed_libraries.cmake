# Checks that LIBRARY needs nothing at run time but libc, the dynamic loader and the project's own libraries.

execute_process(COMMAND "${READELF}" -d "${LIBRARY}" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "[][]" " " output "${output}")  # brackets would join elements of a list
string(REGEX MATCHALL "\\(NEEDED\\)[^\n]+" needed "${output}")
if(NOT needed)
  message(FATAL_ERROR "${READELF} finds no needed libraries in ${LIBRARY}")
endif()

list(TRANSFORM needed STRIP)
list(TRANSFORM needed REPLACE ".* " "")
list(FILTER needed EXCLUDE REGEX "^(libc\\.so\\.6|ld-linux[^/]*\\.so\\.[0-9]+)$")
list(FILTER needed EXCLUDE REGEX "^lib(dbgtrace|bitbuffer|h264|h265)\\.so\\.[0-9]+$")
if(needed)
  message(FATAL_ERROR "${LIBRARY} must not need: ${needed}")
endif()
