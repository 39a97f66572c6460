file(REMOVE_RECURSE
  "../../../bin/aravis_parts_test"
  "../../../bin/aravis_parts_test.pdb"
  "CMakeFiles/aravis_parts_test.dir/GvcpTest.cpp.o"
  "CMakeFiles/aravis_parts_test.dir/GvcpTest.cpp.o.d"
)

# Per-language clean rules from dependency scanning.
foreach(lang CXX)
  include(CMakeFiles/aravis_parts_test.dir/cmake_clean_${lang}.cmake OPTIONAL)
endforeach()
