# What every target of the project is compiled with.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)

add_library(h265_warnings INTERFACE)
target_compile_options(
  h265_warnings
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wconversion
            -Wcast-qual
            -Wformat=2
            -Wno-format-nonliteral
            -Wundef
            -Wvla
            # GCC 12 sees an overlap within std::string's own operator+
            $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
            $<$<BOOL:${H265_WARNINGS_AS_ERRORS}>:-Werror>)
