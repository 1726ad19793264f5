# Debian ships GoogleTest as sources (package googletest). Without them there are no tests, and the next build
# after they have come looks again.
set(GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest's source folder")
file(GLOB googletest CONFIGURE_DEPENDS ${GOOGLETEST_SOURCE}/CMakeLists.txt)
if(googletest)
  set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory(${GOOGLETEST_SOURCE} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  # It is large, and what it does takes no time.
  foreach(target gtest gtest_main)
    target_compile_options(${target} PRIVATE -O0 -g0)
  endforeach()
  include(GoogleTest)
else()
  message(STATUS "No GoogleTest in ${GOOGLETEST_SOURCE} (script/setup installs it): no tests")
endif()
