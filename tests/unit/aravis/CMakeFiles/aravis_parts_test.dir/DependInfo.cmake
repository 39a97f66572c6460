
# Consider dependencies only in project.
set(CMAKE_DEPENDS_IN_PROJECT_ONLY OFF)

# The set of languages for which implicit dependencies are needed:
set(CMAKE_DEPENDS_LANGUAGES
  )

# The set of dependency files which are needed:
set(CMAKE_DEPENDS_DEPENDENCY_FILES
  "/work/main/tests/unit/aravis/GvcpTest.cpp" "tests/unit/aravis/CMakeFiles/aravis_parts_test.dir/GvcpTest.cpp.o" "gcc" "tests/unit/aravis/CMakeFiles/aravis_parts_test.dir/GvcpTest.cpp.o.d"
  )

# Targets to which this target links.
set(CMAKE_TARGET_LINKED_INFO_FILES
  "/work/main/sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/DependInfo.cmake"
  "/work/main/sdk/src/base/CMakeFiles/norvane_base.dir/DependInfo.cmake"
  )

# Fortran module output directory.
set(CMAKE_Fortran_TARGET_MODULE_DIR "")
