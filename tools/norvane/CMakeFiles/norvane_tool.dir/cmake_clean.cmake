file(REMOVE_RECURSE
  "CMakeFiles/norvane_tool.dir/Arguments.cpp.o"
  "CMakeFiles/norvane_tool.dir/Arguments.cpp.o.d"
  "CMakeFiles/norvane_tool.dir/Cameras.cpp.o"
  "CMakeFiles/norvane_tool.dir/Cameras.cpp.o.d"
  "CMakeFiles/norvane_tool.dir/Commands.cpp.o"
  "CMakeFiles/norvane_tool.dir/Commands.cpp.o.d"
  "CMakeFiles/norvane_tool.dir/FeatureReport.cpp.o"
  "CMakeFiles/norvane_tool.dir/FeatureReport.cpp.o.d"
  "CMakeFiles/norvane_tool.dir/JsonWriter.cpp.o"
  "CMakeFiles/norvane_tool.dir/JsonWriter.cpp.o.d"
  "CMakeFiles/norvane_tool.dir/ReportPrinter.cpp.o"
  "CMakeFiles/norvane_tool.dir/ReportPrinter.cpp.o.d"
  "CMakeFiles/norvane_tool.dir/Snap.cpp.o"
  "CMakeFiles/norvane_tool.dir/Snap.cpp.o.d"
  "libnorvane_tool.a"
  "libnorvane_tool.pdb"
)

# Per-language clean rules from dependency scanning.
foreach(lang CXX)
  include(CMakeFiles/norvane_tool.dir/cmake_clean_${lang}.cmake OPTIONAL)
endforeach()
