# Compiler settings of every target: warnings, Qt's strictness, sanitizers, ccache and mold when the machine has them.

add_library(lumora_options INTERFACE)
target_compile_options(lumora_options INTERFACE
    -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wcast-align -fvisibility=hidden)
target_compile_definitions(lumora_options INTERFACE
    QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_FOREACH LUMORA_VERSION="${PROJECT_VERSION}")

option(LUMORA_WERROR "Warnings are errors" OFF)
if(LUMORA_WERROR)
    target_compile_options(lumora_options INTERFACE -Werror)
endif()

# For programs that are given away: what a distribution compiles its own with.
option(LUMORA_HARDENING "Stack protector, checked library calls, tables that are read-only from the start" OFF)
if(LUMORA_HARDENING)
    target_compile_options(lumora_options INTERFACE
        -fstack-protector-strong -fstack-clash-protection -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    target_link_options(lumora_options INTERFACE -Wl,-z,relro -Wl,-z,now)
endif()

if(LUMORA_SANITIZER)
    target_compile_options(lumora_options INTERFACE -fsanitize=${LUMORA_SANITIZER} -fno-omit-frame-pointer)
    target_link_options(lumora_options INTERFACE -fsanitize=${LUMORA_SANITIZER})
    if(LUMORA_SANITIZER MATCHES "undefined")
        target_compile_options(lumora_options INTERFACE -fno-sanitize-recover=all -fno-sanitize=vptr)
    endif()
endif()

option(LUMORA_COVERAGE "Instrument for gcov" OFF)
if(LUMORA_COVERAGE)
    target_compile_options(lumora_options INTERFACE --coverage -O0)
    target_link_options(lumora_options INTERFACE --coverage)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
    set(CMAKE_C_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

find_program(MOLD_PROGRAM mold)
if(MOLD_PROGRAM)
    target_link_options(lumora_options INTERFACE -fuse-ld=mold)
endif()
