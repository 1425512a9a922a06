#include "samples/proof/byte_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "samples/proof/failure.h"

namespace Proof {
namespace {

constexpr std::uint64_t kMaxPiped = std::uint64_t{1} << 32;

class FileBytes : public ByteSource {
 public:
    FileBytes(std::string name, int file, const struct stat& status)
        : ByteSource(std::move(name)),
          mFile(file),
          mSize(static_cast<std::uint64_t>(status.st_size)) {
        mModified = status.st_mtime;
    }
    FileBytes(std::string name, int file, std::uint64_t size)
        : ByteSource(std::move(name)), mFile(file), mSize(size) {}
    ~FileBytes() override { close(mFile); }

    std::uint64_t size() const override { return mSize; }
    void setSize(std::uint64_t size) { mSize = size; }

    std::size_t readAt(std::uint64_t offset, void* to, std::size_t count) override {
        std::size_t done = 0;
        if (offset > mSize) return 0;  // also keeps the offset within off_t
        while (done < count) {
            const ssize_t got = pread(mFile, static_cast<char*>(to) + done, count - done,
                                      static_cast<off_t>(offset + done));
            if (got == 0) break;
            if (got < 0) {
                if (errno == EINTR) continue;
                throw fileFailure(mName, std::strerror(errno));
            }
            done += static_cast<std::size_t>(got);
        }
        return done;
    }

 private:
    int mFile;
    std::uint64_t mSize;
};

class MemoryBytes : public ByteSource {
 public:
    MemoryBytes(std::string name, std::span<const unsigned char> bytes)
        : ByteSource(std::move(name)), mBytes(bytes) {}

    std::uint64_t size() const override { return mBytes.size(); }

    std::size_t readAt(std::uint64_t offset, void* to, std::size_t count) override {
        if (offset >= mBytes.size()) return 0;
        const std::size_t at = static_cast<std::size_t>(offset);
        const std::size_t got = std::min(count, mBytes.size() - at);
        if (got) std::memcpy(to, mBytes.data() + at, got);
        return got;
    }

 private:
    std::span<const unsigned char> mBytes;
};

// Copies what a pipe delivers to a temporary file without a name.
std::unique_ptr<ByteSource> spool(const std::string& name, int pipe) {
    const char* folder = std::getenv("TMPDIR");
    std::string path = std::string(folder && *folder ? folder : "/tmp") + "/vaskel-proof-XXXXXX";
    const int file = mkostemp(path.data(), O_CLOEXEC);
    if (file < 0) throw fileFailure(path, std::strerror(errno));
    unlink(path.c_str());
    auto spooled = std::make_unique<FileBytes>(name, file, 0);
    std::uint64_t size = 0;
    char buffer[65536];
    for (;;) {
        const ssize_t got = read(pipe, buffer, sizeof buffer);
        if (got == 0) break;
        if (got < 0) {
            if (errno == EINTR) continue;
            throw fileFailure(name, std::strerror(errno));
        }
        size += static_cast<std::uint64_t>(got);
        if (size > kMaxPiped) throw fileFailure(name, "more than 4 GiB came through a pipe");
        for (ssize_t done = 0; done < got;) {
            const ssize_t wrote = write(file, buffer + done, static_cast<std::size_t>(got - done));
            if (wrote < 0 && errno == EINTR) continue;
            if (wrote < 0) throw fileFailure(name, std::strerror(errno));
            done += wrote;
        }
    }
    spooled->setSize(size);
    return spooled;
}

}  // namespace

std::unique_ptr<ByteSource> openBytes(const std::string& path, EmptyFile empty) {
    const int file = path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) throw fileFailure(path, std::strerror(errno));
    struct stat status;
    if (fstat(file, &status) != 0) {
        const int reason = errno;
        close(file);
        throw fileFailure(path, std::strerror(reason));
    }
    if (S_ISDIR(status.st_mode)) {
        close(file);
        throw fileFailure(path, "is a directory");
    }
    std::unique_ptr<ByteSource> source;
    if (S_ISREG(status.st_mode)) {
        source = std::make_unique<FileBytes>(path, file, status);
    } else {
        const FileBytes closer(path, file, 0);
        source = spool(path, file);
    }
    if (source->size() == 0 && empty == EmptyFile::Refused) throw fileFailure(path, "is empty");
    return source;
}

std::unique_ptr<ByteSource> memoryBytes(std::string name, std::span<const unsigned char> bytes) {
    return std::make_unique<MemoryBytes>(std::move(name), bytes);
}

bool ByteCursor::refill() {
    mOffset += mFilled;
    mAt = 0;
    mFilled = mSource.readAt(mOffset, mBuffer, sizeof mBuffer);
    return mFilled > 0;
}

std::size_t ByteCursor::read(void* to, std::size_t count) {
    std::size_t done = std::min(count, mFilled - mAt);
    std::memcpy(to, mBuffer + mAt, done);
    mAt += done;
    if (done < count) {
        const std::size_t more =
            mSource.readAt(position(), static_cast<char*>(to) + done, count - done);
        seek(position() + more);
        done += more;
    }
    return done;
}

void ByteCursor::seek(std::uint64_t offset) {
    mOffset = offset;
    mAt = mFilled = 0;
}

}  // namespace Proof
