// Where readers get their bytes: a file, standard input, or memory.

#ifndef SAMPLES_PROOF_BYTE_SOURCE_H
#define SAMPLES_PROOF_BYTE_SOURCE_H

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace Proof {

class ByteSource {
 public:
    virtual ~ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    /// How the user named it; "-" is standard input.
    const std::string& name() const { return mName; }
    /// When the file was last changed, where that is known.
    std::optional<std::time_t> modified() const { return mModified; }

    virtual std::uint64_t size() const = 0;

    /// Copies up to count bytes from offset on; fewer only where the source
    /// ends. Throws Failure when the system cannot read.
    virtual std::size_t readAt(std::uint64_t offset, void* to, std::size_t count) = 0;

 protected:
    explicit ByteSource(std::string name) : mName(std::move(name)) {}
    std::string mName;
    std::optional<std::time_t> mModified;
};

/// Opens a file, or standard input for "-". What cannot be read twice (a
/// pipe) is copied to an unnamed temporary file first, up to 4 GiB. Throws
/// Failure that names the file and the reason; a directory is one, and so is
/// an empty file unless it is permitted.
enum class EmptyFile { Refused, Permitted };
std::unique_ptr<ByteSource> openBytes(const std::string& path,
                                      EmptyFile empty = EmptyFile::Refused);

/// Bytes in memory, which the caller keeps alive.
std::unique_ptr<ByteSource> memoryBytes(std::string name, std::span<const unsigned char> bytes);

/// A buffered position in a source, for readers that take a byte at a time.
class ByteCursor {
 public:
    explicit ByteCursor(ByteSource& source) : mSource(source) {}

    /// The next byte, 0 to 255, or -1 at the end.
    int next() {
        if (mAt == mFilled && !refill()) return -1;
        return mBuffer[mAt++];
    }
    /// Up to count bytes, fewer only where the source ends.
    std::size_t read(void* to, std::size_t count);
    void seek(std::uint64_t offset);
    std::uint64_t position() const { return mOffset + mAt; }

 private:
    bool refill();

    ByteSource& mSource;
    std::uint64_t mOffset = 0;  // of mBuffer[0]
    std::size_t mAt = 0;
    std::size_t mFilled = 0;
    unsigned char mBuffer[16384];
};

}  // namespace Proof

#endif
