#include "EmulatorFixture.h"

#include <algorithm>

namespace Norvane::Transport::Emulator {
namespace {

class FileAccessTest : public EmulatorFixture {
protected:
    void Begin(const std::string& keys = "") {
        m_map.reset();
        m_device.reset();
        Start("[camera 1]\nwidth=64\nheight=64\n" + keys);
        Reopen();
    }
    void Reopen() {
        m_device = Open();
        m_map = Map(m_device);
    }
    bool Do(const char* operation) {
        SetText(*m_map, "FileOperationSelector", operation);
        Execute(*m_map, "FileOperationExecute");
        return TextOf(*m_map, "FileOperationStatus") == "Success";
    }
    bool OpenFor(const char* mode) {
        SetText(*m_map, "FileOpenMode", mode);
        return Do("Open");
    }
    /// As a host does that never sets the offset. @returns the bytes that went
    std::size_t Upload(const std::vector<std::uint8_t>& bytes) {
        EXPECT_TRUE(OpenFor("Write"));
        const GenApi::CRegisterPtr buffer = m_map->GetNode("FileAccessBuffer");
        const auto chunk = static_cast<std::size_t>(buffer->GetLength());
        std::size_t sent = 0;
        while (sent < bytes.size()) {
            const std::size_t part = std::min(chunk, bytes.size() - sent);
            std::vector<std::uint8_t> block(bytes.begin() + static_cast<std::ptrdiff_t>(sent),
                                            bytes.begin() + static_cast<std::ptrdiff_t>(sent + part));
            block.resize((part + 3) / 4 * 4, 0xFF);
            buffer->Set(block.data(), static_cast<std::int64_t>(block.size()));
            SetText(*m_map, "FileAccessLength", std::to_string(part));
            const bool good = Do("Write");
            sent += static_cast<std::size_t>(NumberOf(*m_map, "FileOperationResult"));
            if (!good) {
                break;
            }
        }
        EXPECT_TRUE(Do("Close"));
        return sent;
    }
    std::vector<std::uint8_t> Download() {
        std::vector<std::uint8_t> bytes;
        EXPECT_TRUE(OpenFor("Read"));
        const GenApi::CRegisterPtr buffer = m_map->GetNode("FileAccessBuffer");
        const auto size = static_cast<std::size_t>(NumberOf(*m_map, "FileSize"));
        SetText(*m_map, "FileAccessLength", std::to_string(buffer->GetLength()));
        while (bytes.size() < size && Do("Read")) {
            const auto part = static_cast<std::size_t>(NumberOf(*m_map, "FileOperationResult"));
            std::vector<std::uint8_t> block(static_cast<std::size_t>(buffer->GetLength()));
            buffer->Get(block.data(), static_cast<std::int64_t>(block.size()), false, true);
            bytes.insert(bytes.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(part));
        }
        EXPECT_TRUE(Do("Close"));
        return bytes;
    }
    static std::vector<std::uint8_t> Bytes(std::size_t count) {
        std::vector<std::uint8_t> bytes(count);
        for (std::size_t i = 0; i < count; ++i) {
            bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
        }
        return bytes;
    }

    std::shared_ptr<IDevice> m_device;
    std::shared_ptr<GenApi::INodeMap> m_map;
};

TEST_F(FileAccessTest, WhatGoesUpComesDown) {
    Begin("file-buffer=1024\n");
    EXPECT_EQ(GenApi::CRegisterPtr(m_map->GetNode("FileAccessBuffer"))->GetLength(), 1024);
    for (const std::size_t size : {0U, 1U, 3U, 4U, 5U, 1023U, 1024U, 1025U, 300001U}) {
        const auto bytes = Bytes(size);
        EXPECT_EQ(Upload(bytes), size);
        EXPECT_EQ(NumberOf(*m_map, "FileSize"), static_cast<std::int64_t>(size));
        EXPECT_EQ(Download(), bytes) << size;
    }
}

TEST_F(FileAccessTest, FlashOutlivesAPowerCycleAndMemoryDoesNot) {
    Begin();
    SetText(*m_map, "FileWriteToFlash", "true");
    Upload(Bytes(10));
    SetText(*m_map, "FileWriteToFlash", "false");
    Upload(Bytes(20));
    EXPECT_EQ(Download(), Bytes(20));
    SetText(*m_map, "FileSelector", "UserFile2");
    Upload(Bytes(30));
    Write("");
    ASSERT_TRUE(Eventually([&] { return !Find("1"); }));
    Write("[camera 1]\n");
    ASSERT_TRUE(Eventually([&] { return Find("1").has_value(); }));
    Reopen();
    EXPECT_EQ(Download(), Bytes(10));
    SetText(*m_map, "FileSelector", "UserFile2");
    EXPECT_EQ(NumberOf(*m_map, "FileSize"), 0);
    EXPECT_FALSE(OpenFor("Read"));
}

TEST_F(FileAccessTest, AFileInMemoryThatIsContinuedGoesToFlashAsAWhole) {
    Begin("file-buffer=65536\n");
    SetText(*m_map, "FileWriteToFlash", "false");
    Upload(Bytes(12));
    SetText(*m_map, "FileWriteToFlash", "true");
    ASSERT_TRUE(OpenFor("ReadWrite"));
    SetText(*m_map, "FileAccessOffset", "12");
    SetText(*m_map, "FileAccessLength", "4");
    EXPECT_TRUE(Do("Write"));
    EXPECT_TRUE(Do("Close"));
    SetText(*m_map, "FileAccessOffset", "0");
    EXPECT_EQ(Download().size(), 16U);
    SetText(*m_map, "FileWriteToFlash", "false");
    Upload(std::vector<std::uint8_t>(17U << 20U));
    SetText(*m_map, "FileWriteToFlash", "true");
    EXPECT_FALSE(OpenFor("ReadWrite")) << "flash holds less than memory";
}

TEST_F(FileAccessTest, OperationsOutOfTurnFail) {
    Begin();
    EXPECT_FALSE(Do("Close"));
    EXPECT_FALSE(Do("Read"));
    EXPECT_FALSE(Do("Write"));
    EXPECT_FALSE(Do("Delete"));
    EXPECT_FALSE(OpenFor("Read"));
    EXPECT_TRUE(OpenFor("Write"));
    EXPECT_FALSE(OpenFor("Write"));
    EXPECT_FALSE(Do("Read"));
    SetText(*m_map, "FileAccessOffset", "5"); // past the end
    EXPECT_FALSE(Do("Write"));
    EXPECT_TRUE(Do("Close"));
    EXPECT_TRUE(Do("Delete"));
    SetText(*m_map, "FileSelector", "CalibrationData");
    EXPECT_FALSE(OpenFor("Write"));
    EXPECT_EQ(Download().size(), 3001U);
}

TEST_F(FileAccessTest, TroubleInTheMiddle) {
    Begin("file-buffer=65536\n");
    SetText(*m_map, "FileSelector", "DefectiveFile");
    EXPECT_EQ(Upload(Bytes(200000)), 65536U);
    SetText(*m_map, "FileSelector", "UserFile1");
    EXPECT_EQ(Upload(std::vector<std::uint8_t>(17U << 20U)), (16U << 20U) - 65536U) << "the store is full";
}

} // namespace
} // namespace Norvane::Transport::Emulator
