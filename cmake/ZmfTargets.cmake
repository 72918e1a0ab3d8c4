# zmf_add_library(<name> <folder-glob-mode> LIBS <deps>...)
# One static library per source folder, its files found by glob so that
# adding a file needs no edit here. A folder without sources yet gives an
# interface library, so the tree configures while it grows.
function(zmf_add_library name)
  cmake_parse_arguments(ARG "RECURSE" "" "LIBS" ${ARGN})
  if(ARG_RECURSE)
    file(GLOB_RECURSE srcs CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  else()
    file(GLOB srcs CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  endif()
  set(cpp ${srcs})
  list(FILTER cpp INCLUDE REGEX "\\.cpp$")
  if(cpp)
    add_library(${name} STATIC ${srcs})
    target_link_libraries(${name} PUBLIC ${ARG_LIBS})
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ${ARG_LIBS})
  endif()
endfunction()

# zmf_add_test_suite(<name> FOLDER <tests/ subfolder> [MAIN <file>] LIBS <deps>...)
# One GoogleTest executable per tests/ folder, registered with ctest. The
# default main makes a QGuiApplication on the offscreen platform; suites that
# need a GL context pass their own MAIN.
function(zmf_add_test_suite name)
  cmake_parse_arguments(ARG "" "FOLDER;MAIN" "LIBS" ${ARGN})
  file(GLOB_RECURSE srcs CONFIGURE_DEPENDS ${ZMF_TEST_ROOT}/${ARG_FOLDER}/*.cpp ${ZMF_TEST_ROOT}/${ARG_FOLDER}/*.h)
  if(NOT srcs)
    return()
  endif()
  if(NOT ARG_MAIN)
    set(ARG_MAIN ${ZMF_TEST_ROOT}/common/TestMain.cpp)
  endif()
  add_executable(${name} ${srcs} ${ARG_MAIN})
  target_link_libraries(${name} PRIVATE zmf_test_common ${ARG_LIBS} GTest::gtest GTest::gmock)
  # Suites run the real binary and load the real plugins.
  add_dependencies(${name} zmfbaker)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 WORKING_DIRECTORY ${CMAKE_BINARY_DIR})
endfunction()
