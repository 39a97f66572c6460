#pragma once

#include "norvane/Camera.h"
#include "norvane/genapi/GenApi.h"

#include <cstdint>
#include <functional>

/// One file of a camera's file store, reached through the file access features (SFNC 2.7, "File Access
/// Control"). It works on the file that is selected when it is made, and selects it again before an operation
/// when somebody changed the selection meanwhile, so that a transfer never strays into another file.
///
/// Keeps the camera alive; used on the user-interface thread. No operation throws: a camera that is gone, a
/// node that refuses, a status other than success and a command that does not end in time are all failures,
/// with a debug line for those that the library reports.
class CameraFile {
public:
    enum class ChunkAnswer { Ready, LengthNotWritable, Failed };

    /// @param whileWaiting  called again and again while the camera works on a command.
    CameraFile(Norvane::CameraPtr camera, std::function<void()> whileWaiting);

    /// Whether the camera has the features that a transfer needs.
    static bool IsSupported(Norvane::GenApi::INodeMap& map);

    bool OpenForWriting();
    bool OpenForReading();
    bool Close();

    /// Raises the access length to what the buffer holds and sets the offset to the file's start. With a
    /// length that is too small and cannot be written the answer is LengthNotWritable; ChunkLength() is then
    /// that length.
    ChunkAnswer PrepareChunks();
    /// Bytes that one operation moves at most, 0 before PrepareChunks.
    std::int64_t ChunkLength() const { return m_chunkLength; }
    /// Bytes in the file; -1 when the camera does not tell.
    std::int64_t Size();

    /// Writes `count` bytes, at most ChunkLength(), behind those written before. A shorter chunk is filled up
    /// to a multiple of 4 with 0xFF, and the access length tells how many bytes count.
    /// @return bytes that the camera took, -1 on failure.
    std::int64_t WriteChunk(const char* data, std::int64_t count);
    /// Reads the next chunk, at most `capacity` bytes. @return bytes read, -1 on failure.
    std::int64_t ReadChunk(char* data, std::int64_t capacity);

private:
    enum Operation { Open = 0, Close_ = 1, Read = 2, Write = 3 };
    enum OpenMode { ReadMode = 0, WriteMode = 1 };

    bool open(OpenMode mode);
    bool execute(Operation operation);
    void select(Operation operation);
    void selectOwnFile();
    void setOffset(std::int64_t offset);
    void keepOffset();
    bool waitUntilDone();
    std::int64_t bytesMoved(std::int64_t most);

    Norvane::CameraPtr m_camera;
    std::function<void()> m_whileWaiting;
    Norvane::GenApi::CEnumerationPtr m_selector;
    Norvane::GenApi::CEnumerationPtr m_operation;
    Norvane::GenApi::CEnumerationPtr m_openMode;
    Norvane::GenApi::CCommandPtr m_execute;
    Norvane::GenApi::CEnumerationPtr m_status;
    Norvane::GenApi::CIntegerPtr m_result;
    Norvane::GenApi::CIntegerPtr m_offset;
    Norvane::GenApi::CIntegerPtr m_length;
    Norvane::GenApi::CRegisterPtr m_buffer;
    Norvane::GenApi::CIntegerPtr m_size;
    std::int64_t m_file = 0;     ///< value of the selector
    Operation m_transfer = Read; ///< what the file was opened for
    std::int64_t m_chunkLength = 0;
    std::int64_t m_position = 0;
    bool m_advancesByItself = false; ///< the camera moves the offset with each chunk
};
