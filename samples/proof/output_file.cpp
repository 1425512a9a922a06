#include "samples/proof/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "samples/proof/failure.h"

namespace Proof {
namespace {

// Where a chain of symbolic links leads, so that the link stays a link.
std::string followed(const std::string& path) {
    char* real = realpath(path.c_str(), nullptr);
    if (!real) return path;
    std::string target = real;
    std::free(real);
    return target;
}

// Permissions as a program would get them that simply creates the file.
mode_t usualMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : mPath(path), mTarget(followed(path)) {
    struct stat status;
    if (path == "-") {
        const int out = dup(STDOUT_FILENO);
        mStream = out < 0 ? nullptr : fdopen(out, "wb");
    } else if (stat(mTarget.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        if (S_ISDIR(status.st_mode)) fail(EISDIR);
        mStream = std::fopen(mTarget.c_str(), "wb");
    } else {
        if (access(mTarget.c_str(), F_OK) == 0 && access(mTarget.c_str(), W_OK) != 0) fail(errno);
        openBeside();
    }
    if (!mStream) fail(errno);
}

void OutputFile::probe(const std::string& path) {
    struct stat status;
    if (path == "-") return;
    if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode))
        return;
    const OutputFile tried(path);
}

void OutputFile::openBeside() {
    const std::size_t slash = mTarget.rfind('/');
    const std::size_t leaf = slash == std::string::npos ? 0 : slash + 1;
    // The name's end is left out where the system allows no longer one.
    mBeside = mTarget.substr(0, leaf) + "." + mTarget.substr(leaf, 200) + ".XXXXXX";
    const int file = mkostemp(mBeside.data(), O_CLOEXEC);
    if (file < 0) {
        const int reason = errno;
        mBeside.clear();
        fail(reason);
    }
    struct stat status;
    fchmod(file, stat(mTarget.c_str(), &status) == 0 ? status.st_mode & 07777 : usualMode());
    mStream = fdopen(file, "wb");
    if (!mStream) {
        const int reason = errno;
        close(file);
        fail(reason);
    }
}

OutputFile::~OutputFile() { discard(); }

void OutputFile::discard() {
    if (mStream) std::fclose(mStream);
    mStream = nullptr;
    if (!mBeside.empty()) unlink(mBeside.c_str());
    mBeside.clear();
}

void OutputFile::fail(int reason) {
    discard();
    throw Failure(oneLine("cannot write " + (mPath == "-" ? "standard output" : mPath) + ": " +
                          std::strerror(reason)));
}

void OutputFile::write(std::string_view bytes) {
    errno = EIO;
    if (std::fwrite(bytes.data(), 1, bytes.size(), mStream) != bytes.size()) fail(errno);
}

void OutputFile::commit() {
    errno = EIO;
    if (std::fflush(mStream) != 0 || std::ferror(mStream)) fail(errno);
    if (!mBeside.empty()) {
        const int file = fileno(mStream);
        struct stat status;
        if (fsync(file) != 0 || fstat(file, &status) != 0) fail(errno);
        mSize = static_cast<std::uint64_t>(status.st_size);
    }
    std::FILE* stream = mStream;
    mStream = nullptr;
    if (std::fclose(stream) != 0) fail(errno);
    if (mBeside.empty()) return;
    if (std::rename(mBeside.c_str(), mTarget.c_str()) != 0) fail(errno);
    mBeside.clear();
}

}  // namespace Proof
