# Checks that the headers in HEADERS declare what the lists in SYMBOLS name, no more and no less.

file(GLOB_RECURSE headers "${HEADERS}/*.h")
set(declared "")
foreach(header IN LISTS headers)
  file(READ "${header}" text)
  # A declaration begins in the first column, which neither comments nor members of records do.
  string(REGEX MATCHALL "\n[A-Za-z][A-Za-z0-9_ *]*[ *][A-Za-z0-9_]+\\(" functions "${text}")
  string(REGEX MATCHALL "\nextern [A-Za-z0-9_ *]*[ *][A-Za-z0-9_]+;" variables "${text}")
  string(REPLACE ";;" ";" variables "${variables};")
  list(APPEND declared ${functions} ${variables})
endforeach()
list(TRANSFORM declared STRIP)
list(FILTER declared EXCLUDE REGEX "^typedef ")
list(TRANSFORM declared REPLACE "^.*[ *]([A-Za-z0-9_]+)\\(?$" "\\1")

file(GLOB lists "${SYMBOLS}/*.txt")
set(exported "")
foreach(list IN LISTS lists)
  file(STRINGS "${list}" symbols)
  list(APPEND exported ${symbols})
endforeach()
if(NOT declared OR NOT exported)
  message(FATAL_ERROR "nothing declared in ${HEADERS}, or nothing listed in ${SYMBOLS}")
endif()

set(not_exported ${declared})
list(REMOVE_ITEM not_exported ${exported})
set(not_declared ${exported})
list(REMOVE_ITEM not_declared ${declared})
if(not_exported OR not_declared)
  message(FATAL_ERROR "declared in a public header, not exported: ${not_exported}\n"
                      "exported, not declared in a public header: ${not_declared}")
endif()
