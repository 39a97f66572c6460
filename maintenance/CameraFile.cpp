#include "CameraFile.h"

#include "Guarded.h"

#include <QElapsedTimer>

#include <algorithm>
#include <vector>

using namespace Norvane::GenApi;

namespace {

constexpr std::int64_t kSuccess = 0;
/// Erasing a block of flash memory takes seconds; a camera that needs longer than this is taken for stuck.
constexpr qint64 kCommandTimeLimitMs = 30000;
constexpr std::uint8_t kFill = 0xFF;

constexpr std::int64_t roundedUpTo4(std::int64_t count) {
    return (count + 3) / 4 * 4;
}

} // namespace

CameraFile::CameraFile(Norvane::CameraPtr camera, std::function<void()> whileWaiting)
    : m_camera(std::move(camera)), m_whileWaiting(std::move(whileWaiting)) {
    guarded("looking up the file access features", [&] {
        INodeMap& map = m_camera->GetNodeMap();
        m_selector = map.GetNode("FileSelector");
        m_operation = map.GetNode("FileOperationSelector");
        m_openMode = map.GetNode("FileOpenMode");
        m_execute = map.GetNode("FileOperationExecute");
        m_status = map.GetNode("FileOperationStatus");
        m_result = map.GetNode("FileOperationResult");
        m_offset = map.GetNode("FileAccessOffset");
        m_length = map.GetNode("FileAccessLength");
        m_buffer = map.GetNode("FileAccessBuffer");
        m_size = map.GetNode("FileSize");
        m_file = m_selector->GetIntValue();
    });
}

bool CameraFile::IsSupported(INodeMap& map) {
    const CEnumerationPtr selector(map.GetNode("FileSelector"));
    const CEnumerationPtr operation(map.GetNode("FileOperationSelector"));
    const CCommandPtr execute(map.GetNode("FileOperationExecute"));
    const CRegisterPtr buffer(map.GetNode("FileAccessBuffer"));
    return IsReadable(selector.Get()) && IsAvailable(operation.Get()) && IsImplemented(execute.Get()) &&
           IsImplemented(buffer.Get());
}

bool CameraFile::OpenForWriting() {
    return open(WriteMode);
}

bool CameraFile::OpenForReading() {
    return open(ReadMode);
}

bool CameraFile::open(OpenMode mode) {
    bool success = false;
    guarded("opening a camera file", [&] {
        selectOwnFile();
        m_operation->SetIntValue(Open, true);
        m_openMode->SetIntValue(mode, true);
        success = execute(Open);
    });
    m_transfer = mode == WriteMode ? Write : Read;
    m_position = 0;
    m_advancesByItself = false;
    return success;
}

bool CameraFile::Close() {
    bool success = false;
    guarded("closing a camera file", [&] { success = execute(Close_); });
    return success;
}

bool CameraFile::execute(Operation operation) {
    selectOwnFile();
    m_operation->SetIntValue(operation, true);
    m_execute->Execute(true);
    return waitUntilDone() && m_status->GetIntValue(false, true) == kSuccess;
}

/// Buffer, offset and length may be others for each file and operation, so the selectors come before them.
void CameraFile::select(Operation operation) {
    selectOwnFile();
    if (m_operation->GetIntValue() != operation) {
        m_operation->SetIntValue(operation, true);
    }
}

void CameraFile::selectOwnFile() {
    if (m_selector->GetIntValue() != m_file) {
        m_selector->SetIntValue(m_file, true);
    }
}

bool CameraFile::waitUntilDone() {
    QElapsedTimer elapsed;
    elapsed.start();
    while (!m_execute->IsDone()) {
        if (elapsed.hasExpired(kCommandTimeLimitMs)) {
            qDebug("FileOperationExecute: the camera did not finish the command in time");
            return false;
        }
        m_whileWaiting();
    }
    return true;
}

CameraFile::ChunkAnswer CameraFile::PrepareChunks() {
    ChunkAnswer answer = ChunkAnswer::Failed;
    guarded("preparing a file transfer", [&] {
        select(m_transfer);
        const std::int64_t bufferLength = m_buffer->GetLength();
        m_chunkLength = m_length->GetValue();
        answer = ChunkAnswer::Ready;
        if (m_chunkLength < bufferLength) {
            if (IsWritable(m_length.Get())) {
                m_length->SetValue(bufferLength, true);
                m_chunkLength = m_length->GetValue();
            } else {
                answer = ChunkAnswer::LengthNotWritable;
            }
        }
        m_chunkLength = std::min(m_chunkLength, bufferLength);
        setOffset(0);
        if (m_chunkLength <= 0) {
            answer = ChunkAnswer::Failed;
        }
    });
    return answer;
}

void CameraFile::keepOffset() {
    if (m_position == 0 || m_advancesByItself) {
        return;
    }
    // Most cameras do, which the second chunk shows; then it is not looked at again, for on a slow link each
    // access counts.
    m_advancesByItself = IsReadable(m_offset.Get()) && m_offset->GetValue(false, true) == m_position;
    setOffset(m_position);
}

void CameraFile::setOffset(std::int64_t offset) {
    if (IsReadable(m_offset.Get()) && m_offset->GetValue() != offset && IsWritable(m_offset.Get())) {
        m_offset->SetValue(offset, true);
    }
}

std::int64_t CameraFile::Size() {
    std::int64_t size = -1;
    guarded("reading a camera file's size", [&] { size = m_size->GetValue(false, true); });
    return size;
}

std::int64_t CameraFile::bytesMoved(std::int64_t most) {
    return std::clamp<std::int64_t>(m_result->GetValue(false, true), 0, most);
}

std::int64_t CameraFile::WriteChunk(const char* data, std::int64_t count) {
    std::int64_t written = -1;
    guarded("writing to a camera file", [&] {
        select(Write);
        keepOffset();
        if (count < m_chunkLength) {
            const std::int64_t padded = std::min(roundedUpTo4(count), m_chunkLength);
            std::vector<std::uint8_t> chunk(static_cast<std::size_t>(padded), kFill);
            std::copy_n(data, count, chunk.begin());
            m_buffer->Set(chunk.data(), padded, true);
            m_length->SetValue(count, true);
        } else {
            m_buffer->Set(reinterpret_cast<const std::uint8_t*>(data), count, true);
        }
        if (execute(Write)) {
            written = bytesMoved(count);
            m_position += written;
        }
    });
    return written;
}

std::int64_t CameraFile::ReadChunk(char* data, std::int64_t capacity) {
    std::int64_t read = -1;
    guarded("reading from a camera file", [&] {
        select(Read);
        keepOffset();
        if (!execute(Read)) {
            return;
        }
        const std::int64_t count = bytesMoved(std::min(capacity, m_chunkLength));
        if (count > 0) {
            const std::int64_t padded = std::min(roundedUpTo4(count), m_buffer->GetLength());
            std::vector<std::uint8_t> chunk(static_cast<std::size_t>(padded));
            m_buffer->Get(chunk.data(), padded);
            std::copy_n(chunk.begin(), count, data);
        }
        read = count;
        m_position += count;
    });
    return read;
}
