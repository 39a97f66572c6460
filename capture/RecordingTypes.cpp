#include "RecordingTypes.h"

void registerRecordingMetaTypes() {
    qRegisterMetaType<Norvane::ImagePtr>("ImagePtr");
    qRegisterMetaType<Norvane::ImagePtr>("Norvane::ImagePtr");
    qRegisterMetaType<RecordType>("RecordType");
    qRegisterMetaType<RecordMode>("RecordMode");
    qRegisterMetaType<RecordImFormat>("RecordImFormat");
    qRegisterMetaType<RecordVideoFileType>("RecordVideoFileType");
    qRegisterMetaType<RecordSaveOption>("RecordSaveOption");
    qRegisterMetaType<Norvane::PNGOption>("Norvane::PNGOption");
    qRegisterMetaType<Norvane::BMPOption>("Norvane::BMPOption");
    qRegisterMetaType<Norvane::JPEGOption>("Norvane::JPEGOption");
    qRegisterMetaType<Norvane::JPG2Option>("Norvane::JPG2Option");
    qRegisterMetaType<Norvane::TIFFOption>("Norvane::TIFFOption");
}
