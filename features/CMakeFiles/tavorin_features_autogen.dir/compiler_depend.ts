# CMAKE generated file: DO NOT EDIT!
# Timestamp file for custom commands dependencies management for tavorin_features_autogen.
