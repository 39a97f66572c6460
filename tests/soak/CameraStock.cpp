#include "CameraStock.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

CameraStock::CameraStock(std::string path, Random& random)
    : m_path(std::move(path)),
      m_random(random), m_cameras{
                            {11, "lan", "Duskwing S DWS-50S5C", "BayerRG8", "none"},
                            {12, "lan", "Duskwing S DWS-13S2M", "Mono8", "none"},
                            {13, "usb", "Duskwing U DWU-13S2M", "Mono12p", "none"},
                            {14, "usb", "Duskwing U DWU-23S6C", "RGB8", "none"},
                            {15, "lan", "Duskwing N DWN-31S4C", "BayerRG8", "detection"},
                            {16, "usb", "Duskwing N DWN-23S6C", "BayerRG8", "classification"},
                        } {
    Write(Text(), true);
    ::setenv("NORVANE_EMULATOR", m_path.c_str(), 1);
}

void CameraStock::PlugAll() {
    m_hasUsb = true;
    for (Camera& camera : m_cameras) {
        camera = Camera{camera.serial, camera.adapter, camera.model, camera.format, camera.inference};
    }
    Write(Text(), false);
}

void CameraStock::UnplugAll() {
    for (Camera& camera : m_cameras) {
        camera.isPlugged = false;
    }
    Write(Text(), false);
}

void CameraStock::Change() {
    Camera& camera = m_cameras[static_cast<std::size_t>(m_random.Below(Size()))];
    switch (m_random.Below(10)) {
    case 0:
        m_hasUsb = !m_hasUsb;
        break;
    case 1: // A file that was saved too early, and its rest.
        Write(Text().substr(0, static_cast<std::size_t>(m_random.Below(400))), true);
        break;
    case 2:
        Write(Text() + "[camera nonsense\nwidth = many\n\x01\xff", false);
        return;
    case 3:
    case 4:
    case 5:
        Trouble(camera);
        break;
    default:
        // More come than go: an empty list gives little to do.
        camera.isPlugged = !camera.isPlugged || !m_random.OneIn(2);
        break;
    }
    Write(Text(), m_random.OneIn(3));
}

void CameraStock::Trouble(Camera& camera) {
    constexpr std::array kLosses{0.0, 0.001, 0.02, 0.3};
    constexpr std::array kIncomplete{0, 1, 3, 20};
    constexpr std::array kDelaysUs{0, 0, 200, 1000};
    constexpr std::array kRates{1, 10, 30, 60};
    switch (m_random.Below(6)) {
    case 0:
        camera.loss = m_random.Pick(kLosses);
        break;
    case 1:
        camera.incompleteEvery = m_random.Pick(kIncomplete);
        break;
    case 2:
        camera.registerDelayUs = m_random.Pick(kDelaysUs);
        break;
    case 3:
        camera.frameRate = m_random.Pick(kRates);
        break;
    case 4:
        camera.isReadOnly = m_random.OneIn(3);
        break;
    default:
        camera.isUnusable = m_random.OneIn(4);
        break;
    }
}

std::string CameraStock::Text() const {
    std::ostringstream text;
    text << "[interface lan]\ntype = GEV\nname = Emulated Ethernet\naddress = 169.254.10.1\nnetmask = "
            "255.255.0.0\n";
    if (m_hasUsb) {
        text << "[interface usb]\ntype = U3V\nname = Emulated USB\n";
    }
    for (const Camera& camera : m_cameras) {
        const bool isOnLan = camera.adapter == std::string("lan");
        if (!camera.isPlugged || (!isOnLan && !m_hasUsb)) {
            continue;
        }
        text << "[camera " << camera.serial << "]\ninterface = " << camera.adapter
             << "\nmodel = " << camera.model
             << "\nwidth = 640\nheight = 480\npixel-format = " << camera.format
             << "\nframe-rate = " << camera.frameRate << "\naccess = " << (camera.isReadOnly ? "RO" : "RW")
             << "\nunusable = " << (camera.isUnusable ? "true" : "false")
             << "\ninference = " << camera.inference << "\nincomplete-every = " << camera.incompleteEvery
             << "\nloss = " << camera.loss << "\nregister-delay-us = " << camera.registerDelayUs << '\n';
        if (isOnLan) {
            text << "address = 169.254.10." << camera.serial << '\n';
        }
    }
    return text.str();
}

void CameraStock::Write(const std::string& text, bool inPlace) {
    const std::string target = inPlace ? m_path : m_path + ".new";
    std::ofstream(target, std::ios::binary | std::ios::trunc) << text;
    if (!inPlace) {
        std::filesystem::rename(target, m_path);
    }
}
