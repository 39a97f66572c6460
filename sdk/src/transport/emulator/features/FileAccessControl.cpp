#include "transport/emulator/features/Features.h"

#include "norvane/Exception.h"

#include <algorithm>
#include <optional>

namespace Norvane::Transport::Emulator {
namespace {

constexpr std::uint32_t kLargestBuffer = 65536;

void Execute(CameraModel& camera) {
    RegisterBank& bank = camera.Bank();
    FileStore& store = camera.Files();
    FileStore::Result result;
    const std::int64_t selected = bank.Int("FileSelector");
    if (selected >= 0 && selected < FileStore::kFileCount) {
        const auto file = static_cast<FileStore::File>(selected);
        const auto offset = static_cast<std::uint64_t>(bank.Int("FileAccessOffset"));
        const auto length = static_cast<std::uint64_t>(
            std::min(bank.Int("FileAccessLength"), bank.Int("FileAccessBufferLength")));
        std::uint8_t* const buffer = bank.Bytes("FileAccessBuffer").data();
        switch (static_cast<FileStore::Operation>(bank.Int("FileOperationSelector"))) {
        case FileStore::Operation::Open:
            result = store.Open(file, static_cast<FileStore::OpenMode>(bank.Int("FileOpenMode")),
                                bank.Int("FileWriteToFlash") != 0);
            bank.SetInt("FileAccessOffset", 0);
            break;
        case FileStore::Operation::Close:
            result = store.Close(file);
            break;
        case FileStore::Operation::Read:
            result = store.Read(file, offset, length, buffer);
            break;
        case FileStore::Operation::Write:
            result = store.Write(file, offset, length, buffer);
            break;
        case FileStore::Operation::Delete:
            result = store.Delete(file);
            break;
        }
        // The next access continues where this one ended, for hosts that never set the offset themselves.
        bank.SetInt("FileAccessOffset",
                    static_cast<std::int64_t>(offset + result.bytes) *
                        (bank.Int("FileOperationSelector") != static_cast<int>(FileStore::Operation::Open)));
    }
    bank.SetInt("FileOperationStatus", static_cast<int>(result.status));
    bank.SetInt("FileOperationResult", static_cast<std::int64_t>(result.bytes));
}

} // namespace

void ApplyFileSettings(CameraModel& camera) {
    RegisterBank& bank = camera.Bank();
    bank.SetInt("FileAccessBufferLength", std::min(camera.Camera().fileBufferSize, kLargestBuffer));
    bank.SetInt("FileLengthIsFixed", !camera.Camera().fileLengthWritable);
    bank.SetInt("FileAccessLength", std::min<std::int64_t>(bank.Int("FileAccessBufferLength"), 1024));
}

void AddFileAccessControl(FeatureBuilder& f, CameraModel& camera) {
    RegisterBank& bank = f.Bank();
    f.Category("FileAccessControl", "The files that the camera stores.", "Root", "Guru");
    f.Enumeration("FileSelector", "The file that is worked on.")
        .Guru()
        .Selects({"FileOperationSelector", "FileOperationExecute", "FileOpenMode", "FileOperationStatus",
                  "FileOperationResult", "FileSize", "FileAccessBuffer", "FileAccessOffset",
                  "FileAccessLength"})
        .Entry("UserFile1", FileStore::UserFile1)
        .Entry("UserFile2", FileStore::UserFile2)
        .Entry("InferenceNetwork", FileStore::InferenceNetwork, nullptr, nullptr,
               "The network that inference runs.")
        .Entry("CalibrationData", FileStore::ReadOnlyFile, nullptr, nullptr,
               "Written by the maker; can only be read.")
        .Entry("DefectiveFile", FileStore::FailingFile, nullptr, nullptr,
               "Its memory fails behind 64 KiB, for trying out what then happens.");
    f.Enumeration("FileOperationSelector", "What File Operation Execute does.")
        .Guru()
        .Entry("Open", 0)
        .Entry("Close", 1)
        .Entry("Read", 2)
        .Entry("Write", 3)
        .Entry("Delete", 4);
    f.Command("FileOperationExecute", "Does the selected operation.").Guru().OnWrite([&camera] {
        Execute(camera);
    });
    f.Enumeration("FileOpenMode", "What a file is opened for.")
        .Guru()
        .Entry("Read", 0)
        .Entry("Write", 1)
        .Entry("ReadWrite", 2);
    f.HiddenRegister("FileAccessBufferLength", 2048, {}, 1000);
    f.HiddenRegister("FileLengthIsFixed", 0, {}, 1000);
    f.RawRegister("FileAccessBuffer", "The bytes on their way to or from the file.")
        .Guru()
        .Length(kLargestBuffer)
        .Element("pLength", "FileAccessBufferLength")
        .Volatile()
        .InvalidatedBy({"FileOperationExecute"});
    f.Integer("FileAccessOffset", "Position in the file of the next access; it moves on with each.")
        .Guru()
        .Unit("B")
        .Length(8)
        .Min(0)
        .Max(0x7FFFFFFF)
        .Volatile()
        .InvalidatedBy({"FileOperationExecute"});
    f.Integer("FileAccessLength", "Bytes of the next access.")
        .Guru()
        .Unit("B")
        .Min(1)
        .Max("FileAccessBufferLength")
        .Element("pIsLocked", "FileLengthIsFixed")
        .InvalidatedBy({"FileAccessBufferLength"})
        .OnWrite([&bank] {
            if (bank.Int("FileLengthIsFixed")) {
                throw Exception(Error::AccessDenied, "FileAccessLength is fixed in this camera");
            }
            if (bank.Int("FileAccessLength") < 1 ||
                bank.Int("FileAccessLength") > bank.Int("FileAccessBufferLength")) {
                throw Exception(Error::InvalidParameter, "FileAccessLength is 0 or exceeds the buffer");
            }
        });
    f.Enumeration("FileOperationStatus", "How the last operation ended.")
        .ReadOnly()
        .Guru()
        .Volatile()
        .InvalidatedBy({"FileOperationExecute"})
        .Entry("Success", 0)
        .Entry("Failure", 1);
    f.Integer("FileOperationResult", "Bytes that the last operation moved.")
        .ReadOnly()
        .Guru()
        .Length(8)
        .Volatile()
        .InvalidatedBy({"FileOperationExecute"});
    f.Integer("FileSize", "Bytes of the selected file.")
        .ReadOnly()
        .Guru()
        .Unit("B")
        .Length(8)
        .Volatile()
        .InvalidatedBy({"FileOperationExecute", "FileSelectorReg"})
        .OnRead([&bank, &camera] {
            const std::int64_t selected = bank.Int("FileSelector");
            const bool known = selected >= 0 && selected < FileStore::kFileCount;
            bank.SetInt("FileSize", known ? static_cast<std::int64_t>(
                                                camera.Files().Size(static_cast<FileStore::File>(selected)))
                                          : 0);
        });
    f.Boolean("FileWriteToFlash", "Whether written files go to flash, which keeps them; memory is faster.")
        .Guru()
        .Initial(1);
    ApplyFileSettings(camera);
}

} // namespace Norvane::Transport::Emulator
