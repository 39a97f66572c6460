file(REMOVE_RECURSE
  "../../bin/norvane"
  "../../bin/norvane.pdb"
  "CMakeFiles/norvane_command.dir/main.cpp.o"
  "CMakeFiles/norvane_command.dir/main.cpp.o.d"
)

# Per-language clean rules from dependency scanning.
foreach(lang CXX)
  include(CMakeFiles/norvane_command.dir/cmake_clean_${lang}.cmake OPTIONAL)
endforeach()
