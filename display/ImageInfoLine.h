#pragma once

#include <QString>

/// The line of per-frame information under an image.
class ImageInfoLine {
public:
    /// The parts that are shown.
    struct Selection {
        bool imageStatus = false;
        bool cameraFps = true;
        bool receivedFps = false;
        bool processedFps = true;
        bool displayedFps = false;
    };

    struct Frame {
        int width = 0;
        int height = 0;
        int pixelFormat = 0; ///< Norvane::PixelFormatEnums
        int bitsPerPixel = 0;
        QString id;
        QString timeStamp;
        QString corruptImages;
        QString bufferUnderrun;
    };

    /// Statistics that only GigE Vision has.
    struct Packets {
        QString total;
        QString missed;
        QString resendRequests;
        QString resendPackets;
    };

    /// Images a second.
    struct Rates {
        double camera = 0;
        double received = 0;
        double processed = 0;
        double displayed = 0;
    };

    /// @param packets     null for USB3 Vision.
    /// @param zoomFactor  1 shows one image pixel as one screen pixel.
    static QString Format(const Selection& selection, const Frame& frame, const Packets* packets,
                          double zoomFactor, const Rates& rates);
    /// "Mono", "Bayer", "BGR8", "Raw8", or nothing.
    static QString FormatFamily(int pixelFormat);
};
