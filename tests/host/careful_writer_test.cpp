// The careful writer under injected faults, the lock of a shared file, the refusal of special
// files by the reader, and the check of damaged bar files.

#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cmath>
#include <filesystem>

#include "host/files.h"
#include "platform/file_system.h"
#include "temp_installation.h"

namespace {

namespace fs = std::filesystem;

// Fails one kind of call with an errno; the others go to the system.
class FaultyCalls : public ny::FileSystemCalls {
public:
    enum class Call { Create, Write, ShortWrite, Fsync, Close, Rename, FolderFsync };
    explicit FaultyCalls(Call call) : m_call(call) {}
    int Open(const char* path, int flags, mode_t mode) override {
        if (m_call == Call::Create && (flags & O_CREAT) != 0) return Fail(EROFS);
        const int fd = FileSystemCalls::Open(path, flags, mode);
        if ((flags & O_DIRECTORY) != 0) m_folder = fd;
        return fd;
    }
    ssize_t Write(int fd, const void* buffer, size_t bytes) override {
        if (m_call == Call::Write) return Fail(ENOSPC);
        if (m_call == Call::ShortWrite) return 0;
        return FileSystemCalls::Write(fd, buffer, bytes);
    }
    int Fsync(int fd) override {
        const bool folder = fd == m_folder;
        if ((m_call == Call::Fsync && !folder) || (m_call == Call::FolderFsync && folder)) return Fail(EIO);
        return FileSystemCalls::Fsync(fd);
    }
    int Close(int fd) override {
        const int result = FileSystemCalls::Close(fd);
        return m_call == Call::Close && fd != m_folder ? Fail(EIO) : result;
    }
    int Rename(const char* from, const char* to) override {
        return m_call == Call::Rename ? Fail(EXDEV) : FileSystemCalls::Rename(from, to);
    }

private:
    static int Fail(int error) {
        errno = error;
        return -1;
    }
    Call m_call;
    int m_folder = -1;
};

struct FaultyScope {
    explicit FaultyScope(FaultyCalls* calls) { ny::SetFileSystem(calls); }
    ~FaultyScope() { ny::SetFileSystem(nullptr); }
};

std::string Contents(const std::string& path) {
    std::string bytes;
    return ny::ReadWholeFile(path, &bytes) ? bytes : "<unreadable>";
}

size_t FilesIn(const std::string& folder) {
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

TEST(CarefulWriter, EveryFailedCallKeepsTheOldFileAndSaysWhy) {
    using Call = FaultyCalls::Call;
    const struct {
        Call call;
        const char* cause;
        const char* contents;  // what the target holds afterwards
    } rows[] = {
        {Call::Create, "Read-only file system", "old"},
        {Call::Write, "No space left on device", "old"},
        {Call::ShortWrite, "No space left on device", "old"},
        {Call::Fsync, "Input/output error", "old"},
        {Call::Close, "Input/output error", "old"},
        {Call::Rename, "Invalid cross-device link", "old"},
        // The rename is done when the folder's flush fails: the new file stands, and it is said.
        {Call::FolderFsync, "Input/output error", "new"},
    };
    for (const auto& row : rows) {
        TempInstallation dir;
        const std::string path = dir.Path() + "nyuser.dat";
        ASSERT_TRUE(ny::WriteFileAtomic(path, "old"));
        FaultyCalls calls(row.call);
        std::string error;
        {
            FaultyScope scope(&calls);
            EXPECT_FALSE(ny::WriteFileAtomic(path, "new", &error)) << row.cause;
        }
        EXPECT_NE(error.find(path), std::string::npos) << error;
        EXPECT_NE(error.find(row.cause), std::string::npos) << error;
        EXPECT_EQ(Contents(path), row.contents) << row.cause;
        EXPECT_EQ(FilesIn(dir.Path()), 1u) << "a temporary file was left behind: " << row.cause;
    }
}

TEST(CarefulWriter, ASymlinkInPlaceOfTheFileIsReplacedNotFollowed) {
    TempInstallation dir;
    const std::string elsewhere = dir.Path() + "elsewhere";
    ASSERT_TRUE(ny::WriteFileAtomic(elsewhere, "keep"));
    fs::create_symlink(elsewhere, dir.Path() + "nyuser.dat");
    ASSERT_TRUE(ny::WriteFileAtomic(dir.Path() + "nyuser.dat", "new"));
    EXPECT_EQ(Contents(elsewhere), "keep");
    EXPECT_FALSE(fs::is_symlink(dir.Path() + "nyuser.dat"));
    EXPECT_EQ(Contents(dir.Path() + "nyuser.dat"), "new");
}

TEST(FileLock, ASecondHolderWaitsAndGivesUpWithAReason) {
    TempInstallation dir;
    const std::string path = dir.Path() + "nyuser.dat";
    ny::FileLock first, second;
    std::string error;
    ASSERT_TRUE(first.Acquire(path, 100, &error)) << error;
    EXPECT_FALSE(second.Acquire(path, 100, &error));
    EXPECT_NE(error.find("in use by another program"), std::string::npos) << error;
    first.Release();
    EXPECT_TRUE(second.Acquire(path, 100, &error)) << error;
}

TEST(ReadWholeFile, SpecialAndOversizedFilesAreRefusedWithoutReadingThem) {
    TempInstallation dir;
    const std::string fifo = dir.Path() + "fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    ASSERT_TRUE(ny::WriteFileAtomic(dir.Path() + "big", std::string(100, 'x')));
    const struct {
        std::string path;
        size_t limit;
        const char* reason;
    } rows[] = {
        {fifo, SIZE_MAX, "is not a regular file"},
        {"/dev/zero", SIZE_MAX, "is not a regular file"},
        {dir.Path(), SIZE_MAX, "is not a regular file"},
        {dir.Path() + "big", 99, "is larger than 99 bytes"},
        {dir.Path() + "missing", SIZE_MAX, "No such file or directory"},
    };
    for (const auto& row : rows) {
        std::string bytes, error;
        EXPECT_FALSE(ny::ReadWholeFile(row.path, &bytes, &error, row.limit)) << row.path;
        EXPECT_NE(error.find(row.reason), std::string::npos) << error;
    }
}

TEST(ReadBars, DamagedRecordsAreNamedByFileAndRecord) {
    const CHisDay sound{.m_lTime = 20210630, .m_fOpen = 10, .m_fHigh = 11, .m_fLow = 10, .m_fClose = 11, .m_fVolume = 1000};
    CHisDay minute = sound;
    minute.m_lTime = 2106301455;
    const auto with = [&](void (*change)(CHisDay&)) {
        CHisDay bar = sound;
        change(bar);
        return ny::EncodeBars({sound, bar});
    };
    const struct {
        std::string bytes;
        bool minute;
        ny::MarketFileState state;
        const char* damage;
    } rows[] = {
        {ny::EncodeBars({sound, sound}), false, ny::MarketFileState::Whole, ""},
        {ny::EncodeBars({minute}), true, ny::MarketFileState::Whole, ""},
        {"", false, ny::MarketFileState::Whole, ""},
        {ny::EncodeBars({sound}) + "short", false, ny::MarketFileState::Damaged, "length 45 is not a multiple of 40"},
        {with([](CHisDay& b) { b.m_lTime = 0; }), false, ny::MarketFileState::Damaged, "record 2: impossible date 0"},
        {with([](CHisDay& b) { b.m_lTime = 20210230; }), false, ny::MarketFileState::Damaged, "record 2: impossible date"},
        {ny::EncodeBars({sound}), true, ny::MarketFileState::Damaged, "record 1: impossible time 20210630"},
        {with([](CHisDay& b) { b.m_fClose = std::nanf(""); }), false, ny::MarketFileState::Damaged, "record 2: a price"},
        {with([](CHisDay& b) { b.m_fLow = -1; }), false, ny::MarketFileState::Damaged, "record 2: a price"},
        {with([](CHisDay& b) { b.m_fHigh = 9; }), false, ny::MarketFileState::Damaged, "record 2: the high is below"},
        {with([](CHisDay& b) { b.m_fVolume = -5; }), false, ny::MarketFileState::Damaged, "record 2: the volume"},
    };
    for (const auto& row : rows) {
        TempInstallation dir;
        const std::string path = dir.Path() + "600001.day";
        ASSERT_TRUE(ny::WriteFileAtomic(path, row.bytes));
        std::vector<CHisDay> bars;
        std::string damage;
        EXPECT_EQ(ny::ReadBars(path, row.minute, &bars, &damage), row.state) << row.damage;
        EXPECT_NE(damage.find(row.damage), std::string::npos) << damage;
        if (row.state == ny::MarketFileState::Damaged) {
            EXPECT_EQ(damage.find(path), 0u) << damage;
        }
    }
    std::vector<CHisDay> bars;
    EXPECT_EQ(ny::ReadBars("/nonexistent/600001.day", false, &bars), ny::MarketFileState::Missing);
}

}  // namespace
