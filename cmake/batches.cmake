# Where files are compiled in batches (CMAKE_UNITY_BUILD), those of one folder are a batch: a new file changes no batch
# but its folder's.
function(batch_by_folder target)
  get_target_property(sources ${target} SOURCES)
  foreach(source IN LISTS sources)
    cmake_path(GET source PARENT_PATH folder)
    cmake_path(RELATIVE_PATH folder BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
    string(MAKE_C_IDENTIFIER "${folder}" folder)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP "${folder}")
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP)
endfunction()
