# Empty custom commands generated dependencies file for tavorin_features_autogen.
# This may be replaced when dependencies are built.
