# Compares the symbols that LIBRARY exports with those in the file LIST, or renews the file (RENEW).

execute_process(COMMAND "${NM}" -D --defined-only "${LIBRARY}" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^ \n]+\n" exported "${output}")
list(TRANSFORM exported STRIP)
list(SORT exported)
if(NOT exported)
  message(FATAL_ERROR "${NM} finds no exported symbols in ${LIBRARY}")
endif()

if(RENEW)
  list(JOIN exported "\n" lines)
  file(WRITE "${LIST}" "${lines}\n")
  return()
endif()

file(STRINGS "${LIST}" expected)
set(added ${exported})
list(REMOVE_ITEM added ${expected})
set(missing ${expected})
list(REMOVE_ITEM missing ${exported})
if(added OR missing)
  message(
    FATAL_ERROR
      "${LIBRARY} does not export what ${LIST} says.\n"
      "exported, not in the list: ${added}\n"
      "in the list, not exported: ${missing}\n"
      "If that is meant to be, build the target renew_exported_symbols and commit the list. "
      "A symbol that goes away breaks programs: it takes a new major version.")
endif()
