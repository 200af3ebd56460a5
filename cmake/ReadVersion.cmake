# Sets h265_version to the version that the header for programs states: there it is written, and nowhere else.

set(version_header "${CMAKE_CURRENT_LIST_DIR}/../components/include/h265/version.h")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${version_header}")
file(STRINGS "${version_header}" h265_version REGEX "^#define H265_VERSION_(MAJOR|MINOR|PATCH) ")
list(TRANSFORM h265_version REPLACE "^#define [A-Z0-9_]+ ([0-9]+).*" "\\1")
list(JOIN h265_version "." h265_version)
