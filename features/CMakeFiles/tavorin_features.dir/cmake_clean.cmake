file(REMOVE_RECURSE
  "CMakeFiles/tavorin_features_autogen.dir/AutogenUsed.txt"
  "CMakeFiles/tavorin_features_autogen.dir/ParseCache.txt"
  "tavorin_features_autogen"
  "CMakeFiles/tavorin_features.dir/CellPainter.cpp.o"
  "CMakeFiles/tavorin_features.dir/CellPainter.cpp.o.d"
  "CMakeFiles/tavorin_features.dir/CustomDelegate.cpp.o"
  "CMakeFiles/tavorin_features.dir/CustomDelegate.cpp.o.d"
  "CMakeFiles/tavorin_features.dir/EditDisabledDelegate.cpp.o"
  "CMakeFiles/tavorin_features.dir/EditDisabledDelegate.cpp.o.d"
  "CMakeFiles/tavorin_features.dir/FeatureModel.cpp.o"
  "CMakeFiles/tavorin_features.dir/FeatureModel.cpp.o.d"
  "CMakeFiles/tavorin_features.dir/FeatureTreeView.cpp.o"
  "CMakeFiles/tavorin_features.dir/FeatureTreeView.cpp.o.d"
  "CMakeFiles/tavorin_features.dir/Mapper.cpp.o"
  "CMakeFiles/tavorin_features.dir/Mapper.cpp.o.d"
  "CMakeFiles/tavorin_features.dir/tavorin_features_autogen/mocs_compilation.cpp.o"
  "CMakeFiles/tavorin_features.dir/tavorin_features_autogen/mocs_compilation.cpp.o.d"
  "CMakeFiles/tavorin_features.dir/wFeatureTree.cpp.o"
  "CMakeFiles/tavorin_features.dir/wFeatureTree.cpp.o.d"
  "CMakeFiles/tavorin_features.dir/wFeaturesTabController.cpp.o"
  "CMakeFiles/tavorin_features.dir/wFeaturesTabController.cpp.o.d"
  "CMakeFiles/tavorin_features.dir/wPrmDialog.cpp.o"
  "CMakeFiles/tavorin_features.dir/wPrmDialog.cpp.o.d"
  "libtavorin_features.a"
  "libtavorin_features.pdb"
)

# Per-language clean rules from dependency scanning.
foreach(lang CXX)
  include(CMakeFiles/tavorin_features.dir/cmake_clean_${lang}.cmake OPTIONAL)
endforeach()
