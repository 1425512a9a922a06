#include "samples/proof/output_file.h"

#include <doctest/doctest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "samples/proof/failure.h"
#include "tests/samples/pictures.h"

using namespace Proof;
namespace fs = std::filesystem;

namespace {

int filesIn(const TempFolder& folder) {
    int count = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(folder.path())) ++count;
    return count;
}

std::string failureOfOutput(const std::string& path) {
    try {
        OutputFile file(path);
        file.write("text");
        file.commit();
        return "";
    } catch (const Failure& failure) {
        return failure.what();
    }
}

}  // namespace

TEST_CASE("an output takes its name when it is complete, and not before") {
    const TempFolder folder;
    const std::string path = folder / "out";
    writeFile(path, "old");
    {
        OutputFile file(path);
        file.write("new ");
        CHECK(readFile(path) == "old");
        file.write("content");
        file.commit();
        CHECK(file.size() == 11);
    }
    CHECK(readFile(path) == "new content");
    CHECK(filesIn(folder) == 1);
}

TEST_CASE("an output that is given up leaves the older file and nothing beside it") {
    const TempFolder folder;
    const std::string path = folder / "out";
    writeFile(path, "old");
    {
        OutputFile file(path);
        file.write(std::string(1000000, 'x'));
    }
    CHECK(readFile(path) == "old");
    CHECK(filesIn(folder) == 1);
}

TEST_CASE("an output keeps the older file's permissions, a new one gets the usual ones") {
    const TempFolder folder;
    writeFile(folder / "old", "old");
    fs::permissions(folder / "old", fs::perms(0640));
    const mode_t before = umask(027);
    CHECK(failureOfOutput(folder / "old") == "");
    CHECK(failureOfOutput(folder / "new") == "");
    umask(before);
    CHECK(fs::status(folder / "old").permissions() == fs::perms(0640));
    CHECK(fs::status(folder / "new").permissions() == fs::perms(0640));
}

TEST_CASE("a symbolic link stays a link to the new content") {
    const TempFolder folder;
    writeFile(folder / "target", "old");
    fs::create_symlink("target", folder / "link");
    CHECK(failureOfOutput(folder / "link") == "");
    CHECK(fs::is_symlink(folder / "link"));
    CHECK(readFile(folder / "target") == "text");
}

TEST_CASE("an output that cannot be written is named with the reason") {
    const TempFolder folder;
    const std::string nowhere = folder / "none/out";
    CHECK(failureOfOutput(nowhere) == "cannot write " + nowhere + ": No such file or directory");
    CHECK(failureOfOutput(folder / ".") == "cannot write " + (folder / ".") + ": Is a directory");
    CHECK(failureOfOutput("/dev/full") == "cannot write /dev/full: No space left on device");
    CHECK(failureOfOutput("/dev/null") == "");
}

TEST_CASE("an output can be tried without leaving a trace") {
    const TempFolder folder;
    writeFile(folder / "old", "old");
    OutputFile::probe(folder / "old");
    OutputFile::probe(folder / "new");
    OutputFile::probe("-");
    OutputFile::probe("/dev/full");
    CHECK(filesIn(folder) == 1);
    CHECK(readFile(folder / "old") == "old");
    CHECK_THROWS_AS(OutputFile::probe(folder / "none/out"), Failure);
    CHECK_THROWS_AS(OutputFile::probe(folder / "."), Failure);
}

TEST_CASE("a name as long as the system allows can be written") {
    const TempFolder folder;
    const std::string path = folder / std::string(255, 'n');
    CHECK(failureOfOutput(path) == "");
    CHECK(readFile(path) == "text");
    CHECK(filesIn(folder) == 1);
}
