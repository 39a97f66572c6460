
# Consider dependencies only in project.
set(CMAKE_DEPENDS_IN_PROJECT_ONLY OFF)

# The set of languages for which implicit dependencies are needed:
set(CMAKE_DEPENDS_LANGUAGES
  )

# The set of dependency files which are needed:
set(CMAKE_DEPENDS_DEPENDENCY_FILES
  "/work/main/tools/norvane/Arguments.cpp" "tools/norvane/CMakeFiles/norvane_tool.dir/Arguments.cpp.o" "gcc" "tools/norvane/CMakeFiles/norvane_tool.dir/Arguments.cpp.o.d"
  "/work/main/tools/norvane/Cameras.cpp" "tools/norvane/CMakeFiles/norvane_tool.dir/Cameras.cpp.o" "gcc" "tools/norvane/CMakeFiles/norvane_tool.dir/Cameras.cpp.o.d"
  "/work/main/tools/norvane/Commands.cpp" "tools/norvane/CMakeFiles/norvane_tool.dir/Commands.cpp.o" "gcc" "tools/norvane/CMakeFiles/norvane_tool.dir/Commands.cpp.o.d"
  "/work/main/tools/norvane/FeatureReport.cpp" "tools/norvane/CMakeFiles/norvane_tool.dir/FeatureReport.cpp.o" "gcc" "tools/norvane/CMakeFiles/norvane_tool.dir/FeatureReport.cpp.o.d"
  "/work/main/tools/norvane/JsonWriter.cpp" "tools/norvane/CMakeFiles/norvane_tool.dir/JsonWriter.cpp.o" "gcc" "tools/norvane/CMakeFiles/norvane_tool.dir/JsonWriter.cpp.o.d"
  "/work/main/tools/norvane/ReportPrinter.cpp" "tools/norvane/CMakeFiles/norvane_tool.dir/ReportPrinter.cpp.o" "gcc" "tools/norvane/CMakeFiles/norvane_tool.dir/ReportPrinter.cpp.o.d"
  "/work/main/tools/norvane/Snap.cpp" "tools/norvane/CMakeFiles/norvane_tool.dir/Snap.cpp.o" "gcc" "tools/norvane/CMakeFiles/norvane_tool.dir/Snap.cpp.o.d"
  )

# Targets to which this target links.
set(CMAKE_TARGET_LINKED_INFO_FILES
  "/work/main/sdk/src/core/CMakeFiles/norvane_core.dir/DependInfo.cmake"
  "/work/main/sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/DependInfo.cmake"
  "/work/main/sdk/src/transport/emulator/CMakeFiles/norvane_emulator.dir/DependInfo.cmake"
  "/work/main/sdk/src/imaging/CMakeFiles/norvane_imaging.dir/DependInfo.cmake"
  "/work/main/sdk/src/base/CMakeFiles/norvane_base.dir/DependInfo.cmake"
  )

# Fortran module output directory.
set(CMAKE_Fortran_TARGET_MODULE_DIR "")
