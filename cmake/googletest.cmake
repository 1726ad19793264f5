# Debian ships GoogleTest as sources (package googletest).
set(GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest's source folder")
if(NOT EXISTS ${GOOGLETEST_SOURCE}/CMakeLists.txt)
  message(FATAL_ERROR "No GoogleTest sources in ${GOOGLETEST_SOURCE}: run script/setup, "
                      "set GOOGLETEST_SOURCE, or configure with -DBUILD_TESTING=OFF.")
endif()
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
add_subdirectory(${GOOGLETEST_SOURCE} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
include(GoogleTest)
