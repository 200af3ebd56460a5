# Checks that each symbol of the lists in SYMBOLS is used by a fuzzer in TARGETS.

file(GLOB lists "${SYMBOLS}/*.txt")
file(GLOB sources "${TARGETS}/*.cpp")
set(text "")
foreach(source IN LISTS sources)
  file(READ "${source}" content)
  string(REGEX REPLACE "//[^\n]*" "" content "${content}") # a comment is no use
  string(APPEND text "${content}")
endforeach()

set(symbols "")
foreach(list IN LISTS lists)
  file(STRINGS "${list}" more)
  list(APPEND symbols ${more})
endforeach()
if(NOT symbols)
  message(FATAL_ERROR "no symbols in ${SYMBOLS}")
endif()

set(missing "")
foreach(symbol IN LISTS symbols)
  if(NOT text MATCHES "[^A-Za-z0-9_]${symbol}[^A-Za-z0-9_]")
    list(APPEND missing ${symbol})
  endif()
endforeach()
if(missing)
  message(FATAL_ERROR "no fuzzer in ${TARGETS} uses: ${missing}")
endif()
