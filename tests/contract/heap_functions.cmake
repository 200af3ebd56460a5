# Checks that LIBRARY takes memory with malloc, calloc and realloc alone: what makes allocations fail in the tests
# has then made all of them fail.

execute_process(COMMAND "${NM}" -D --undefined-only "${LIBRARY}" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^ \n]+\n" imported "${output}")
list(TRANSFORM imported STRIP)
list(TRANSFORM imported REPLACE "@.*" "")
if(NOT imported)
  message(FATAL_ERROR "${NM} finds no imported symbols in ${LIBRARY}")
endif()

# C++ operator new in all its forms, and the functions of the C library that return memory
list(FILTER imported INCLUDE REGEX "^(_Zn[aw].*|.*alloc|.*memalign|.*strn?dup|v?asprintf|getdelim|getline|open_.*stream|mmap)$")
list(REMOVE_ITEM imported malloc calloc realloc)
if(imported)
  message(FATAL_ERROR "${LIBRARY} takes memory with: ${imported}")
endif()
