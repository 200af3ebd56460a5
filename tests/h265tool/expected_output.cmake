# Compares what TOOL (run by EMULATOR, if any) prints of each sample with the file LIST, a line a command: the
# SHA-256 of the output, the exit status, the command. Or renews the file (RENEW). The list is the same for all
# architectures and compilers.

separate_arguments(EMULATOR)
set(commands "inspect" "inspect --json" "show --all --level 6" "extract --captions --timecodes --afd --json")
set(output_file "${CMAKE_CURRENT_BINARY_DIR}/expected_output.txt")

file(GLOB samples RELATIVE "${SAMPLES}" "${SAMPLES}/*.hevc" "${SAMPLES}/units/*.nal")
list(SORT samples)
set(lines "")
foreach(command IN LISTS commands)
  string(REPLACE " " ";" arguments "${command}")
  foreach(sample IN LISTS samples)
    execute_process(
      COMMAND ${EMULATOR} "${TOOL}" ${arguments} "${sample}"
      WORKING_DIRECTORY "${SAMPLES}"
      OUTPUT_FILE "${output_file}"
      RESULT_VARIABLE status)
    if(NOT status MATCHES "^[0-9]+$")
      message(FATAL_ERROR "${TOOL} ${command} ${sample}: ${status}")
    endif()
    file(READ "${output_file}" output)
    string(REGEX REPLACE "Data:0x[0-9a-f]+" "Data:" output "${output}") # an address that a display prints
    string(SHA256 hash "${output}")
    list(APPEND lines "${hash} ${status} h265tool ${command} ${sample}")
  endforeach()
endforeach()
file(REMOVE "${output_file}")

if(RENEW)
  list(JOIN lines "\n" text)
  file(WRITE "${LIST}" "${text}\n")
  return()
endif()

file(STRINGS "${LIST}" expected)
set(different ${lines})
list(REMOVE_ITEM different ${expected})
set(missing ${expected})
list(REMOVE_ITEM missing ${lines})
if(different OR missing)
  list(JOIN different "\n  " different)
  list(JOIN missing "\n  " missing)
  message(
    FATAL_ERROR
      "The tool does not print what ${LIST} says.\n"
      "printed (SHA-256 of the output, exit status, command run in tests/samples):\n  ${different}\n"
      "expected:\n  ${missing}\n"
      "Compare the outputs of an earlier build. If the new ones are right, build the target "
      "renew_expected_output and commit the list.")
endif()
