file(REMOVE_RECURSE
  "CMakeFiles/tavorin_features_autogen"
  "tavorin_features_autogen/mocs_compilation.cpp"
)

# Per-language clean rules from dependency scanning.
foreach(lang )
  include(CMakeFiles/tavorin_features_autogen.dir/cmake_clean_${lang}.cmake OPTIONAL)
endforeach()
