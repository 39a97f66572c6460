# Empty dependencies file for norvane_tool.
# This may be replaced when dependencies are built.
