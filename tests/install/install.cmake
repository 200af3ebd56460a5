# cmake -D build=DIR -D prefix=DIR -P install.cmake: installs the build tree under an empty prefix.

file(REMOVE_RECURSE "${prefix}")
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${build}" --prefix "${prefix}" COMMAND_ERROR_IS_FATAL ANY)
