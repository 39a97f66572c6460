# Empty compiler generated dependencies file for norvane_command.
# This may be replaced when dependencies are built.
