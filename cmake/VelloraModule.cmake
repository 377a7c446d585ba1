# One static library per source folder, subfolders included (a folder grouped by concern stays one
# library). Sources are globbed so that adding a class is adding its two files; CONFIGURE_DEPENDS
# re-runs the glob on every build.
#
#   vellora_module(<folder> [DEPS <targets>...])  ->  target vellora_<folder>
function(vellora_module folder)
    cmake_parse_arguments(ARG "" "" "DEPS" ${ARGN})
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS
        ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    add_library(vellora_${folder} STATIC ${sources})
    target_include_directories(vellora_${folder} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(vellora_${folder} PUBLIC ${ARG_DEPS})
endfunction()

# One test executable per folder of tests/, registered test by test with CTest, and once more as
# a whole (tests_<folder>.whole): every test of the binary in one process, in shuffled order, three
# times over, so that state one test leaves behind for the next fails the run. A failing run
# prints the shuffle seed; `--gtest_random_seed=<seed>` repeats its order.
#
#   vellora_tests(<folder> [DEPS <targets>...])  ->  target tests_<folder>
function(vellora_tests folder)
    cmake_parse_arguments(ARG "" "" "DEPS;ENVIRONMENT" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp
        ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    add_executable(tests_${folder} ${sources})
    target_link_libraries(tests_${folder} PRIVATE vellora_testsupport ${ARG_DEPS})
    gtest_discover_tests(tests_${folder}
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 60
        PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen;${ARG_ENVIRONMENT}" TIMEOUT 120)
    add_test(NAME tests_${folder}.whole
        COMMAND tests_${folder} --gtest_shuffle --gtest_repeat=3 --gtest_brief=1)
    set_tests_properties(tests_${folder}.whole PROPERTIES
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;${ARG_ENVIRONMENT}" TIMEOUT 900 LABELS whole)
endfunction()
