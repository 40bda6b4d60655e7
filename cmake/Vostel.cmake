# What every folder's CMakeLists.txt uses: one static library per folder, and its tests.

find_program(CCACHE ccache)
if(CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
    set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE})
endif()

add_library(vostel_options INTERFACE)
target_compile_options(vostel_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                                                -Woverloaded-virtual)
if(VOSTEL_WERROR)
    target_compile_options(vostel_options INTERFACE -Werror)
endif()
if(VOSTEL_SANITIZE)
    target_compile_options(vostel_options INTERFACE -fsanitize=${VOSTEL_SANITIZE}
                                                    -fno-omit-frame-pointer
                                                    # Its check opens a pipe, and tests take all descriptors.
                                                    -fno-sanitize=vptr
                                                    -fno-sanitize-recover=undefined)
    target_link_options(vostel_options INTERFACE -fsanitize=${VOSTEL_SANITIZE})
endif()
target_include_directories(vostel_options INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_definitions(vostel_options INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_KEYWORDS
                                                    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
target_link_libraries(vostel_options INTERFACE Threads::Threads)

# What is given to others checks its buffers and its stack; these checks need an optimised build.
add_compile_options("$<$<CONFIG:Release>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2;-fstack-protector-strong>")

# No library that is not used, and tables that the loader finds its way through quickly. Functions that
# nothing calls are dropped; symbols are bound when they are first used.
add_compile_options(-ffunction-sections -fdata-sections)
add_link_options(-Wl,--as-needed -Wl,-O1 -Wl,--gc-sections -Wl,-z,relro)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # As many jobs as there are processors.
    set(CMAKE_CXX_COMPILE_OPTIONS_IPO -flto=auto -fno-fat-lto-objects)
    set(CMAKE_CXX_LINK_OPTIONS_IPO -flto=auto)
    if(CMAKE_INTERPROCEDURAL_OPTIMIZATION)
        # Inlining shows GCC 12 allocations in Qt's containers whose sizes it cannot bound.
        add_link_options(-Wno-alloc-size-larger-than)
    endif()
endif()

# What a sanitizer is told to pass over, and why: scripts/sanitizers/.
set(VOSTEL_TEST_ENVIRONMENT QT_LOGGING_RULES=qt.qpa.*=false
    LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/scripts/sanitizers/leaks.txt:print_suppressions=0
    TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/scripts/sanitizers/threads.txt)

# With VOSTEL_PCH the standard library, Qt and GoogleTest are compiled once for all targets that use Qt. Not
# for the builds that people work in: it would hide a missing include.
macro(vostel_precompile)
    if(VOSTEL_PCH)
        # ccache keeps what is compiled with such a header only when told so.
        set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros
            ${CMAKE_CXX_COMPILER_LAUNCHER})
        add_library(vostel_precompiled OBJECT ${CMAKE_SOURCE_DIR}/cmake/Precompiled.cpp)
        target_link_libraries(vostel_precompiled PRIVATE vostel_options Qt6::Widgets Qt6::DBus GTest::gtest)
        target_precompile_headers(vostel_precompiled PRIVATE ${CMAKE_SOURCE_DIR}/cmake/Precompiled.h)
        if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
            add_compile_options(-Xclang -fno-pch-timestamp)
        endif()
    endif()
endmacro()
function(vostel_use_precompiled name)
    if(VOSTEL_PCH)
        target_precompile_headers(${name} REUSE_FROM vostel_precompiled)
    endif()
endfunction()

# vostel_library(<name> SOURCES a.cpp ... LINK targets ... [MOC])
# MOC: the folder declares QObjects.
function(vostel_library name)
    cmake_parse_arguments(ARG "MOC" "" "SOURCES;LINK" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC vostel_options ${ARG_LINK})
    if(ARG_MOC)
        set_target_properties(${name} PROPERTIES AUTOMOC ON)
        vostel_use_precompiled(${name})
    endif()
endfunction()

# Every test runs through this: it fails the test that leaves processes or files behind.
set(VOSTEL_LEAVE_NOTHING ${CMAKE_SOURCE_DIR}/scripts/leave-nothing.sh)
# Everything that the label "threads" stands for.
add_custom_target(thread_tests)

# vostel_test(<name> SOURCES tests/XTests.cpp ... LINK targets ... [QT] [THREADS] [ROOT] [TIMEOUT seconds])
# THREADS: what is tested has threads of its own; label "threads", run with the thread sanitizer, too.
# ROOT: needs to be root; label "root".
# QT: the test makes its own QApplication; it runs on the off-screen platform.
# FIXTURES (a macro in the test) is the folder tests/fixtures beside the CMakeLists.txt.
function(vostel_test name)
    if(NOT VOSTEL_TESTS)
        return()
    endif()
    cmake_parse_arguments(ARG "QT;THREADS;ROOT" "TIMEOUT" "SOURCES;LINK" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 60)
    endif()
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    if(VOSTEL_SANITIZE MATCHES thread)
        target_sources(${name} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/SanitizedClone.cpp)
    endif()
    target_compile_definitions(${name} PRIVATE
        FIXTURES="${CMAKE_CURRENT_SOURCE_DIR}/tests/fixtures")
    if(ARG_QT)
        target_sources(${name} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/QtTestMain.cpp)
        target_link_libraries(${name} PRIVATE vostel_options ${ARG_LINK} GTest::gtest Qt6::Widgets)
        vostel_use_precompiled(${name})
    else()
        target_link_libraries(${name} PRIVATE vostel_options ${ARG_LINK} GTest::gtest_main)
    endif()
    add_test(NAME ${name} COMMAND ${VOSTEL_LEAVE_NOTHING} $<TARGET_FILE:${name}>)
    if(ARG_THREADS)
        set_property(TEST ${name} APPEND PROPERTY LABELS threads)
        add_dependencies(thread_tests ${name})
    endif()
    if(ARG_ROOT)
        set_property(TEST ${name} APPEND PROPERTY LABELS root)
    endif()
    set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT}
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;${VOSTEL_TEST_ENVIRONMENT}")
endfunction()
