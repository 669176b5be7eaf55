# Where it is there, the compiler's cache makes a second build quick; nothing needs it. One that
# cannot write to its folder lets no compilation pass.
find_program(SPINDRIFT_CCACHE ccache)
if(SPINDRIFT_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    set(probe ${CMAKE_BINARY_DIR}/CMakeFiles/ccache-probe)
    file(WRITE ${probe}.cpp "int main() {}\n")
    execute_process(COMMAND ${SPINDRIFT_CCACHE} ${CMAKE_CXX_COMPILER} -c ${probe}.cpp -o ${probe}.o
        RESULT_VARIABLE ccache_result OUTPUT_QUIET ERROR_QUIET)
    if(ccache_result EQUAL 0)
        set(CMAKE_CXX_COMPILER_LAUNCHER ${SPINDRIFT_CCACHE})
    endif()
endif()

# Warnings are errors for every target of ours; set once here, used through spindrift_options. A
# compiler newer than those of Debian 12, 13 and sid may know warnings that nobody has seen yet: they
# are shown there, but do not keep a user from building.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 17)
    set(known_compiler ON)
else()
    set(known_compiler OFF)
endif()
option(SPINDRIFT_WARNINGS_AS_ERRORS "Let no warning pass" ${known_compiler})

add_library(spindrift_options INTERFACE)
target_compile_options(spindrift_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
    -Woverloaded-virtual)
if(SPINDRIFT_WARNINGS_AS_ERRORS)
    target_compile_options(spindrift_options INTERFACE -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # Wrong in GCC 12 for a literal plus a std::string when it optimises fully.
    target_compile_options(spindrift_options INTERFACE -Wno-restrict)
endif()
if(SPINDRIFT_UNITY AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Sources that are compiled together look like headers to it.
    target_compile_options(spindrift_options INTERFACE -Wno-subobject-linkage)
endif()
target_compile_definitions(spindrift_options INTERFACE _FILE_OFFSET_BITS=64 _GNU_SOURCE)

set(SPINDRIFT_SANITIZE "" CACHE STRING "Sanitizers to build with: address,undefined or thread")
if(SPINDRIFT_SANITIZE)
    add_compile_options(-fsanitize=${SPINDRIFT_SANITIZE} -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${SPINDRIFT_SANITIZE})
endif()

option(SPINDRIFT_FUZZ "Build the fuzz targets, with clang" OFF)
if(SPINDRIFT_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# Qt's own switches, for targets that use Qt.
add_library(spindrift_qt_options INTERFACE)
target_link_libraries(spindrift_qt_options INTERFACE spindrift_options)
target_compile_definitions(spindrift_qt_options INTERFACE
    QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_USE_QSTRINGBUILDER
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
