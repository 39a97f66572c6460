
# Consider dependencies only in project.
set(CMAKE_DEPENDS_IN_PROJECT_ONLY OFF)

# The set of languages for which implicit dependencies are needed:
set(CMAKE_DEPENDS_LANGUAGES
  )

# The set of dependency files which are needed:
set(CMAKE_DEPENDS_DEPENDENCY_FILES
  "/work/main/sdk/src/transport/aravis/Adapters.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/Adapters.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/Adapters.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/AravisDevice.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/AravisDevice.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/AravisDevice.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/AravisStream.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/AravisStream.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/AravisStream.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/AravisTransport.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/AravisTransport.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/AravisTransport.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/BlockMarks.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/BlockMarks.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/BlockMarks.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/ChunkLayout.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/ChunkLayout.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/ChunkLayout.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/DeviceLife.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/DeviceLife.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/DeviceLife.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/DeviceTarget.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/DeviceTarget.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/DeviceTarget.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/DeviceWorker.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/DeviceWorker.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/DeviceWorker.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/ForceIp.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/ForceIp.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/ForceIp.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/GObjectPtr.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/GObjectPtr.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/GObjectPtr.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/GevDiscovery.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/GevDiscovery.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/GevDiscovery.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/Gvcp.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/Gvcp.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/Gvcp.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/GvcpSocket.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/GvcpSocket.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/GvcpSocket.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/ReceiveSocket.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/ReceiveSocket.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/ReceiveSocket.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/RegisterAccess.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/RegisterAccess.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/RegisterAccess.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/StreamCore.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/StreamCore.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/StreamCore.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/UsbControllers.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/UsbControllers.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/UsbControllers.cpp.o.d"
  "/work/main/sdk/src/transport/aravis/UsbDiscovery.cpp" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/UsbDiscovery.cpp.o" "gcc" "sdk/src/transport/aravis/CMakeFiles/norvane_aravis.dir/UsbDiscovery.cpp.o.d"
  )

# Targets to which this target links.
set(CMAKE_TARGET_LINKED_INFO_FILES
  "/work/main/sdk/src/base/CMakeFiles/norvane_base.dir/DependInfo.cmake"
  )

# Fortran module output directory.
set(CMAKE_Fortran_TARGET_MODULE_DIR "")
