# Empty compiler generated dependencies file for tavorin_features.
# This may be replaced when dependencies are built.
