# The entry functions shared by the fuzz targets and the corpus replay test;
# included from both places, defined once.
if(NOT TARGET devid_fuzz_entries)
  file(GLOB _devid_fuzz_entry_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/*.cpp)
  add_library(devid_fuzz_entries STATIC ${_devid_fuzz_entry_sources})
  target_link_libraries(devid_fuzz_entries PUBLIC devid simboard devid_treeimport)
  # The database entry reads through the parser library, which devid opens at run time.
  add_dependencies(devid_fuzz_entries mora_targetdb_parser)
endif()
