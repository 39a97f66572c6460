#pragma once

#include "norvane/Image.h"
#include "norvane/ImageOptions.h"

#include <QMetaType>
#include <QString>

/// What a recording makes.
enum RecordType {
    RECORD_IMAGES = 0, ///< still image files
    RECORD_VIDEO = 1,  ///< a video file
};

/// How images get from the camera to the disk.
enum RecordMode {
    BUFFERED = 0,  ///< copied into memory, written as fast as the disk takes them
    STREAMING = 1, ///< written as they arrive, without a buffer
};

enum RecordImFormat { PGM = 0, PPM = 1, BMP = 2, JPEG = 3, JPEG2000 = 4, TIFF = 5, PNG = 6, RAW = 7 };

enum RecordVideoFileType { UNCOMPRESSED = 0, MJPG = 1, H264 = 2 };

/// Which images of a run are kept and what ends it.
enum RecordSaveOption {
    SAVE_FRAME_COUNT = 0, ///< until so many frames, 0 until stopped
    SAVE_ONE_OF_N = 1,    ///< one out of every N frames from a run of M frames
    SAVE_FOR_TIME = 2,    ///< until so many milliseconds, 0 until stopped
    SAVE_TIME_LAPSE = 3,  ///< one frame every X ms from a run of Y ms
};

/// Everything that a recording is told before it starts, with the values of a fresh engine. Passed by value.
struct RecordingSettings {
    RecordType type = RECORD_IMAGES;
    RecordMode mode = BUFFERED;
    RecordImFormat imageFormat = PGM;
    RecordVideoFileType videoType = UNCOMPRESSED;
    RecordSaveOption saveOption = SAVE_FRAME_COUNT;
    QString folder; ///< files are named folder + "/" + time

    Norvane::PNGOption png{false, 8};
    Norvane::BMPOption bmp{true};
    Norvane::PGMOption pgm{true};
    Norvane::PPMOption ppm{true};
    Norvane::JPEGOption jpeg{false, 50};
    Norvane::JPG2Option jpeg2000{50};
    Norvane::TIFFOption tiff{Norvane::TIFFOption::NONE};
    bool saveAsBinary = false;

    unsigned int framesToGrab = 0;
    unsigned int everyN = 0;
    unsigned int framesToKeep = 0; ///< run length / N, 0 when N is 0
    unsigned int stopTimeMs = 0;
    unsigned int intervalMs = 0;
    unsigned int runMs = 0;

    int h264Bitrate = 2000000; ///< bits per second
    int mjpegQuality = 75;     ///< 1 to 100
    int fileSplitSizeMb = 0;   ///< 0 writes one file
    double videoFrameRate = 30.0;

    /// Video encoders and raw files take the camera's pixels; every other format takes colour display pixels.
    bool KeepsCameraPixelFormat() const { return type == RECORD_VIDEO || imageFormat == RAW; }
};

Q_DECLARE_METATYPE(RecordType)
Q_DECLARE_METATYPE(RecordMode)
Q_DECLARE_METATYPE(RecordImFormat)
Q_DECLARE_METATYPE(RecordVideoFileType)
Q_DECLARE_METATYPE(RecordSaveOption)
Q_DECLARE_METATYPE(Norvane::ImagePtr)
Q_DECLARE_METATYPE(Norvane::PNGOption)
Q_DECLARE_METATYPE(Norvane::BMPOption)
Q_DECLARE_METATYPE(Norvane::JPEGOption)
Q_DECLARE_METATYPE(Norvane::JPG2Option)
Q_DECLARE_METATYPE(Norvane::TIFFOption)

/// Lets images, recording enumerations and option records travel in queued signals. Any number of calls.
void registerRecordingMetaTypes();
