# Empty compiler generated dependencies file for norvane_aravis.
# This may be replaced when dependencies are built.
