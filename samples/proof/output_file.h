// An output that appears whole or not at all.

#ifndef SAMPLES_PROOF_OUTPUT_FILE_H
#define SAMPLES_PROOF_OUTPUT_FILE_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace Proof {

/// Written to a hidden file beside the target, which takes the target's name
/// in one step when it is complete. Until then, and whatever goes wrong, an
/// older file stays as it is. What is no regular file (a device, a pipe,
/// standard output for "-") is written directly.
class OutputFile {
 public:
    /// Throws Failure, naming the file and the reason, where it cannot be
    /// written.
    explicit OutputFile(const std::string& path);
    /// Throws what the constructor would throw, so that nobody works an hour
    /// for an output that cannot be. Devices and pipes are not tried.
    static void probe(const std::string& path);

    /// Removes what was not committed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    const std::string& path() const { return mPath; }

    /// Appends bytes. Throws Failure and gives the output up where that fails.
    void write(std::string_view bytes);

    /// Brings all bytes to the disk and gives the file its name. Throws
    /// Failure, and leaves an older file as it is, where that fails.
    void commit();

    /// How many bytes were written; after commit.
    std::uint64_t size() const { return mSize; }

 private:
    void openBeside();
    [[noreturn]] void fail(int reason);
    void discard();

    std::string mPath;    // as the user wrote it
    std::string mTarget;  // with symbolic links followed
    std::string mBeside;  // the hidden file; empty when writing directly
    std::FILE* mStream = nullptr;
    std::uint64_t mSize = 0;
};

}  // namespace Proof

#endif
