# Empty dependencies file for aravis_parts_test.
# This may be replaced when dependencies are built.
