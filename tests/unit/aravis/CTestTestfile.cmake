# CMake generated Testfile for 
# Source directory: /work/main/tests/unit/aravis
# Build directory: /work/main/tests/unit/aravis
# 
# This file includes the relevant testing commands required for 
# testing this directory and lists subdirectories to be tested as well.
add_test([=[aravis_parts_test]=] "/work/main/bin/aravis_parts_test")
set_tests_properties([=[aravis_parts_test]=] PROPERTIES  TIMEOUT "120" WORKING_DIRECTORY "/work/main" _BACKTRACE_TRIPLES "/work/main/cmake/Tavorin.cmake;72;add_test;/work/main/tests/unit/aravis/CMakeLists.txt;1;tavorin_test;/work/main/tests/unit/aravis/CMakeLists.txt;0;")
add_test([=[aravis_camera_test]=] "/work/main/bin/aravis_camera_test")
set_tests_properties([=[aravis_camera_test]=] PROPERTIES  TIMEOUT "240" WORKING_DIRECTORY "/work/main" _BACKTRACE_TRIPLES "/work/main/cmake/Tavorin.cmake;72;add_test;/work/main/tests/unit/aravis/CMakeLists.txt;6;tavorin_test;/work/main/tests/unit/aravis/CMakeLists.txt;0;")
