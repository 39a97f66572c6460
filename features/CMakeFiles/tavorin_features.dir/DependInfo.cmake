
# Consider dependencies only in project.
set(CMAKE_DEPENDS_IN_PROJECT_ONLY OFF)

# The set of languages for which implicit dependencies are needed:
set(CMAKE_DEPENDS_LANGUAGES
  )

# The set of dependency files which are needed:
set(CMAKE_DEPENDS_DEPENDENCY_FILES
  "/work/main/features/CellPainter.cpp" "features/CMakeFiles/tavorin_features.dir/CellPainter.cpp.o" "gcc" "features/CMakeFiles/tavorin_features.dir/CellPainter.cpp.o.d"
  "/work/main/features/CustomDelegate.cpp" "features/CMakeFiles/tavorin_features.dir/CustomDelegate.cpp.o" "gcc" "features/CMakeFiles/tavorin_features.dir/CustomDelegate.cpp.o.d"
  "/work/main/features/EditDisabledDelegate.cpp" "features/CMakeFiles/tavorin_features.dir/EditDisabledDelegate.cpp.o" "gcc" "features/CMakeFiles/tavorin_features.dir/EditDisabledDelegate.cpp.o.d"
  "/work/main/features/FeatureModel.cpp" "features/CMakeFiles/tavorin_features.dir/FeatureModel.cpp.o" "gcc" "features/CMakeFiles/tavorin_features.dir/FeatureModel.cpp.o.d"
  "/work/main/features/FeatureTreeView.cpp" "features/CMakeFiles/tavorin_features.dir/FeatureTreeView.cpp.o" "gcc" "features/CMakeFiles/tavorin_features.dir/FeatureTreeView.cpp.o.d"
  "/work/main/features/Mapper.cpp" "features/CMakeFiles/tavorin_features.dir/Mapper.cpp.o" "gcc" "features/CMakeFiles/tavorin_features.dir/Mapper.cpp.o.d"
  "/work/main/features/tavorin_features_autogen/mocs_compilation.cpp" "features/CMakeFiles/tavorin_features.dir/tavorin_features_autogen/mocs_compilation.cpp.o" "gcc" "features/CMakeFiles/tavorin_features.dir/tavorin_features_autogen/mocs_compilation.cpp.o.d"
  "/work/main/features/wFeatureTree.cpp" "features/CMakeFiles/tavorin_features.dir/wFeatureTree.cpp.o" "gcc" "features/CMakeFiles/tavorin_features.dir/wFeatureTree.cpp.o.d"
  "/work/main/features/wFeaturesTabController.cpp" "features/CMakeFiles/tavorin_features.dir/wFeaturesTabController.cpp.o" "gcc" "features/CMakeFiles/tavorin_features.dir/wFeaturesTabController.cpp.o.d"
  "/work/main/features/wPrmDialog.cpp" "features/CMakeFiles/tavorin_features.dir/wPrmDialog.cpp.o" "gcc" "features/CMakeFiles/tavorin_features.dir/wPrmDialog.cpp.o.d"
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
