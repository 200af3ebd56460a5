# Compares the binary interface of LIBRARY, types in HEADERS included, with the baseline in the file BASELINE, or
# renews the file (RENEW).

find_program(ABIDIFF abidiff)
find_program(ABIDW abidw)
if(NOT ABIDIFF OR NOT ABIDW)
  message("SKIPPED: libabigail is not there")
  return()
endif()

if(RENEW)
  # No more than what a comparison needs: no paths of this machine, no indentation, no defaults.
  execute_process(
    COMMAND "${ABIDW}" --headers-dir "${HEADERS}" --drop-private-types --exported-interfaces-only --no-corpus-path
            --no-comp-dir-path --no-show-locs --no-elf-needed --no-parameter-names --no-write-default-sizes
            "${LIBRARY}"
    OUTPUT_VARIABLE abi COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE "\n +" "\n" abi "${abi}")
  string(REGEX REPLACE " path='[^']*/" " path='" abi "${abi}")
  string(REPLACE " visibility='default'" "" abi "${abi}")
  file(WRITE "${BASELINE}" "${abi}")
  return()
endif()

# Without the headers: with them, what has changed in a record counts as private, the baseline having no locations.
execute_process(
  COMMAND "${ABIDIFF}" --exported-interfaces-only "${BASELINE}" "${LIBRARY}"
  OUTPUT_VARIABLE report
  ERROR_VARIABLE report
  RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(
    FATAL_ERROR
      "The binary interface of ${LIBRARY} is not that of ${BASELINE}:\n${report}\n"
      "If that is meant to be, build the target renew_abi_baseline and commit the file. A change that breaks "
      "programs (of a record, of a function's parameters, a symbol that goes away) takes a new major version.")
endif()
