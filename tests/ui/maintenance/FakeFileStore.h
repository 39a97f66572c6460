#pragma once

#include "TestDevice.h"

#include <QByteArray>

#include <map>
#include <memory>
#include <vector>

/// The file store of a camera behind its file access registers, with faults on request.
class FakeFileStore : public Norvane::GenApi::IPort {
public:
    struct Setup {
        std::int64_t bufferLength = 1024;
        std::int64_t accessLength = 1024; ///< at the start
        bool lengthWritable = true;
        bool advancesOffset = true;      ///< after each operation, by itself
        bool lengthPerOperation = false; ///< the access length belongs to the selected operation
    };
    enum File { UserFile1 = 0, UserFile2 = 1 };
    enum Operation { Open = 0, Close = 1, Read_ = 2, Write_ = 3 };

    explicit FakeFileStore(const Setup& setup) : m_setup(setup) {}

    /// A camera of which nothing but the file store works.
    static std::shared_ptr<TestCamera> CameraWith(const std::shared_ptr<FakeFileStore>& store);

    Norvane::GenApi::EAccessMode GetAccessMode() const override { return Norvane::GenApi::RW; }
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;

    std::map<int, QByteArray> files{{UserFile1, {}}, {UserFile2, {}}};
    std::vector<QByteArray> bufferWrites; ///< as they came in
    std::int64_t lengthOfLastWrite = 0;   ///< access length at the last write operation
    bool open = false;
    int operations = 0;
    int failOperation = -1; ///< this kind of operation reports a failure...
    int failFrom = 0;       ///< ... from this operation on
    int loseAt = -1;        ///< from this operation on nothing answers
    bool writeToFlash = true;

private:
    bool execute();
    std::int64_t& accessLength();

    Setup m_setup;
    std::map<std::int64_t, std::int64_t> m_accessLengths; ///< by operation
    std::int64_t m_offset = 0;
    std::int64_t m_selected = UserFile1;
    std::int64_t m_operation = Open;
    std::int64_t m_openMode = 0;
    std::int64_t m_status = 0;
    std::int64_t m_result = 0;
    int m_openFile = UserFile1;
    QByteArray m_buffer;
};
