# Makes a test of every suite of ${unit_tests}. gtest_discover_tests would make one of every test, and
# so many starts of a program take longer than all the tests.
execute_process(COMMAND ${unit_tests} --gtest_list_tests OUTPUT_VARIABLE listed
    COMMAND_ERROR_IS_FATAL ANY)
# Suites stand at the beginning of a line and end with a dot, their tests are indented.
string(REGEX MATCHALL "\n[A-Za-z0-9_/]+\\." suites "\n${listed}")
foreach(suite IN LISTS suites)
    string(REGEX REPLACE "[\n.]" "" suite "${suite}")
    add_test("unit.${suite}" ${unit_tests} --gtest_brief=1 "--gtest_filter=${suite}.*")
    set_tests_properties("unit.${suite}" PROPERTIES LABELS unit)
endforeach()
