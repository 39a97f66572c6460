# Empty dependencies file for aravis_camera_test.
# This may be replaced when dependencies are built.
