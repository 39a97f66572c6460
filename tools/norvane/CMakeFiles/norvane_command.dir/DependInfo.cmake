
# Consider dependencies only in project.
set(CMAKE_DEPENDS_IN_PROJECT_ONLY OFF)

# The set of languages for which implicit dependencies are needed:
set(CMAKE_DEPENDS_LANGUAGES
  )

# The set of dependency files which are needed:
set(CMAKE_DEPENDS_DEPENDENCY_FILES
  "/work/main/tools/norvane/main.cpp" "tools/norvane/CMakeFiles/norvane_command.dir/main.cpp.o" "gcc" "tools/norvane/CMakeFiles/norvane_command.dir/main.cpp.o.d"
  )

# Targets to which this target links.
set(CMAKE_TARGET_LINKED_INFO_FILES
  "/work/main/tools/norvane/CMakeFiles/norvane_tool.dir/DependInfo.cmake"
  "/work/main/sdk/src/core/CMakeFiles/norvane_core.dir/DependInfo.cmake"
  "/work/main/sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/DependInfo.cmake"
  "/work/main/sdk/src/transport/emulator/CMakeFiles/norvane_emulator.dir/DependInfo.cmake"
  "/work/main/sdk/src/imaging/CMakeFiles/norvane_imaging.dir/DependInfo.cmake"
  "/work/main/sdk/src/base/CMakeFiles/norvane_base.dir/DependInfo.cmake"
  )

# Fortran module output directory.
set(CMAKE_Fortran_TARGET_MODULE_DIR "")
