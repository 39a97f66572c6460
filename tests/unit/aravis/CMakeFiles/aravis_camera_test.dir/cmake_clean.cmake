file(REMOVE_RECURSE
  "../../../bin/aravis_camera_test"
  "../../../bin/aravis_camera_test.pdb"
  "CMakeFiles/aravis_camera_test.dir/CameraTest.cpp.o"
  "CMakeFiles/aravis_camera_test.dir/CameraTest.cpp.o.d"
  "CMakeFiles/aravis_camera_test.dir/FakeCamera.cpp.o"
  "CMakeFiles/aravis_camera_test.dir/FakeCamera.cpp.o.d"
  "CMakeFiles/aravis_camera_test.dir/PrivateNetwork.cpp.o"
  "CMakeFiles/aravis_camera_test.dir/PrivateNetwork.cpp.o.d"
  "CMakeFiles/aravis_camera_test.dir/StreamTest.cpp.o"
  "CMakeFiles/aravis_camera_test.dir/StreamTest.cpp.o.d"
)

# Per-language clean rules from dependency scanning.
foreach(lang CXX)
  include(CMakeFiles/aravis_camera_test.dir/cmake_clean_${lang}.cmake OPTIONAL)
endforeach()
