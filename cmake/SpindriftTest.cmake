# spindrift_test(NAME SOURCES ... LIBRARIES ... [LABEL label] [ENVIRONMENT "A=b" ...])
# One GoogleTest program; each of its tests becomes a ctest test of its own. Every run is offscreen,
# in the C.UTF-8 locale, uses the tools of this build and no session bus of the user.
function(spindrift_test NAME)
    cmake_parse_arguments(ARG "" "LABEL" "SOURCES;LIBRARIES;ENVIRONMENT" ${ARGN})
    if(NOT ARG_LABEL)
        set(ARG_LABEL unit)
    endif()
    add_executable(${NAME} ${ARG_SOURCES})
    set_target_properties(${NAME} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    target_link_libraries(${NAME} PRIVATE ${ARG_LIBRARIES} spindrift_options GTest::gmock)
    gtest_discover_tests(${NAME}
        DISCOVERY_TIMEOUT 60
        DISCOVERY_MODE PRE_TEST
        PROPERTIES
            LABELS ${ARG_LABEL}
            TIMEOUT 120)
    # Not among the properties above, which fall apart at the semicolons of a list on their way.
    set(environment QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8
        SPINDRIFT_TOOL_ROOT=${SPINDRIFT_TOOL_ROOT_DIR}
        DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent ${ARG_ENVIRONMENT})
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${NAME}_environment.cmake)
    file(WRITE ${script} "if(${NAME}_TESTS)
  set_tests_properties(\${${NAME}_TESTS} PROPERTIES ENVIRONMENT [==[${environment}]==])
endif()
")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${script})
endfunction()
