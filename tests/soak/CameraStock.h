#pragma once

#include "Random.h"

#include <string>
#include <vector>

/// The emulated cameras of a run. Plugs them in and out, and makes them difficult, by editing their
/// description file as a person would with an editor, or as a program does that writes it in pieces.
class CameraStock {
public:
    /// Writes a first file and names it to the camera library. @param path  where the file is kept.
    CameraStock(std::string path, Random& random);

    int Size() const { return static_cast<int>(m_cameras.size()); }
    /// All cameras, well-behaved.
    void PlugAll();
    void UnplugAll();
    /// One random change: a camera or an interface comes or goes, a camera becomes slow, lossy, read-only or
    /// itself again, the file breaks for a moment.
    void Change();

private:
    struct Camera {
        int serial;
        const char* adapter;
        const char* model;
        const char* format;
        const char* inference;
        bool isPlugged = true;
        double loss = 0.0;
        int incompleteEvery = 0;
        int registerDelayUs = 0;
        bool isReadOnly = false;
        bool isUnusable = false;
        int frameRate = 20;
    };

    void Trouble(Camera& camera);
    std::string Text() const;
    /// Replaces the file as a whole, or overwrites it in place.
    void Write(const std::string& text, bool inPlace);

    std::string m_path;
    Random& m_random;
    std::vector<Camera> m_cameras;
    bool m_hasUsb = true;
};
