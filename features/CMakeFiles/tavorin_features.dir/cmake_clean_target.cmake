file(REMOVE_RECURSE
  "libtavorin_features.a"
)
