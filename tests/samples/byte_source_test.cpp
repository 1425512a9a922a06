#include "samples/proof/byte_source.h"

#include <doctest/doctest.h>
#include <sys/stat.h>

#include <cstring>
#include <thread>

#include "samples/proof/failure.h"
#include "tests/samples/pictures.h"

using namespace Proof;

namespace {

std::string failureOfOpening(const std::string& path) {
    try {
        openBytes(path);
        return "";
    } catch (const Failure& failure) {
        return failure.what();
    }
}

}  // namespace

TEST_CASE("a source reads from any place and no further than its end") {
    const TempFolder folder;
    writeFile(folder / "digits", "0123456789");
    const Bytes memory = bytesOf("0123456789");
    const std::unique_ptr<ByteSource> sources[] = {openBytes(folder / "digits"),
                                                   memoryBytes("digits", memory)};
    for (const auto& source : sources) {
        CHECK(source->size() == 10);
        char to[8] = {};
        CHECK(source->readAt(3, to, 4) == 4);
        CHECK(std::string(to, 4) == "3456");
        CHECK(source->readAt(8, to, 4) == 2);
        CHECK(std::string(to, 2) == "89");
        CHECK(source->readAt(10, to, 4) == 0);
        CHECK(source->readAt(~std::uint64_t{0}, to, 4) == 0);
    }
    CHECK(sources[0]->modified().has_value());
    CHECK_FALSE(sources[1]->modified().has_value());
}

TEST_CASE("a cursor delivers bytes one by one, in pieces, and after a seek") {
    Bytes bytes(50000);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i % 251);
    const auto source = memoryBytes("bytes", bytes);
    ByteCursor cursor(*source);
    CHECK(cursor.next() == 0);
    CHECK(cursor.next() == 1);
    Bytes piece(40000);
    CHECK(cursor.read(piece.data(), piece.size()) == piece.size());
    CHECK(std::memcmp(piece.data(), bytes.data() + 2, piece.size()) == 0);
    CHECK(cursor.position() == 40002);
    CHECK(cursor.next() == 40002 % 251);
    CHECK(cursor.read(piece.data(), piece.size()) == 9997);
    CHECK(cursor.next() == -1);
    cursor.seek(252);
    CHECK(cursor.next() == 1);
    CHECK(cursor.position() == 253);
}

TEST_CASE("what cannot be read is named with its reason") {
    const TempFolder folder;
    writeFile(folder / "empty", "");
    CHECK(failureOfOpening(folder / "none") == (folder / "none") + ": No such file or directory");
    CHECK(failureOfOpening(folder / "empty") == (folder / "empty") + ": is empty");
    CHECK(failureOfOpening(folder / ".") == (folder / ".") + ": is a directory");
}

TEST_CASE("a pipe is read whole before anything is looked up in it") {
    const TempFolder folder;
    const std::string pipe = folder / "pipe";
    REQUIRE(mkfifo(pipe.c_str(), 0600) == 0);
    const std::string text = "P1 1 1 1" + std::string(200000, ' ');
    std::thread writer([&] { writeFile(pipe, text); });
    const auto source = openBytes(pipe);
    writer.join();
    CHECK(source->size() == text.size());
    char last = 0;
    CHECK(source->readAt(text.size() - 1, &last, 1) == 1);
    CHECK(last == ' ');
    CHECK(source->readAt(0, &last, 1) == 1);
    CHECK(last == 'P');
}

TEST_CASE("a name with control characters stays on its line") {
    CHECK(failureOfOpening("no\nsuch\033file") == "no?such?file: No such file or directory");
}
