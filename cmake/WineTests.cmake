# How tests run: every test program is a Windows program that CTest starts through
# tools/wine-run (the toolchain's emulator) in the build tree's own Wine prefix. The
# prefix is made once, and one wineserver stays up for a whole run, by the
# wine_prefix fixture, which every Wine test requires. Each test's name ends in its
# lane, ".x86" or ".x64", and the lane is its label too (ctest -L x64).

set(KORVALIN_WINEPREFIX ${CMAKE_BINARY_DIR}/wineprefix)

# A path on this machine as a Windows program under Wine sees it (drive Z: is /).
function(korvalin_windows_path out path)
    string(REPLACE "/" "\\" windows "${path}")
    set(${out} "Z:${windows}" PARENT_SCOPE)
endfunction()

function(korvalin_add_wine_fixture)
    add_test(NAME wine_prefix_start.${KORVALIN_ARCH}
             COMMAND ${CMAKE_SOURCE_DIR}/tools/wine-prefix start ${KORVALIN_WINEPREFIX})
    set_tests_properties(wine_prefix_start.${KORVALIN_ARCH} PROPERTIES FIXTURES_SETUP wine_prefix TIMEOUT 900
                         LABELS ${KORVALIN_ARCH})
    add_test(NAME wine_prefix_stop.${KORVALIN_ARCH}
             COMMAND ${CMAKE_SOURCE_DIR}/tools/wine-prefix stop ${KORVALIN_WINEPREFIX})
    set_tests_properties(wine_prefix_stop.${KORVALIN_ARCH} PROPERTIES FIXTURES_CLEANUP wine_prefix
                         LABELS ${KORVALIN_ARCH})
endfunction()

# korvalin_add_wine_test(NAME <name> SOURCES <files...> [LIBRARIES <libs...>]
#                        [ENVIRONMENT <VAR=value...>] [DEPENDS <targets...>])
# Builds a GoogleTest program and runs it under Wine as one CTest test.
function(korvalin_add_wine_test)
    cmake_parse_arguments(T "" "NAME;TIMEOUT" "SOURCES;LIBRARIES;ENVIRONMENT;DEPENDS" ${ARGN})
    add_executable(${T_NAME} ${T_SOURCES})
    target_link_libraries(${T_NAME} PRIVATE korvalin_test_support ${T_LIBRARIES})
    if(T_DEPENDS)
        add_dependencies(${T_NAME} ${T_DEPENDS})
    endif()
    set(test ${T_NAME}.${KORVALIN_ARCH})
    add_test(NAME ${test} COMMAND ${T_NAME})
    if(NOT T_TIMEOUT)
        set(T_TIMEOUT 600)
    endif()
    # A program that Wine ends abnormally (a crash inside Wine's own exception
    # handling) can leave exit status 0: the test passes only when GoogleTest
    # reached its summary without a failure.
    set_tests_properties(${test} PROPERTIES
        LABELS ${KORVALIN_ARCH}
        PASS_REGULAR_EXPRESSION "\\[  PASSED  \\] [0-9]+ test"
        FAIL_REGULAR_EXPRESSION "\\[  FAILED  \\]"
        FIXTURES_REQUIRED wine_prefix
        RESOURCE_LOCK wineprefix
        TIMEOUT ${T_TIMEOUT}
        ENVIRONMENT "WINEPREFIX=${KORVALIN_WINEPREFIX};${T_ENVIRONMENT}")
endfunction()
