#include "samples/proof/overwrite.h"

#include <sys/stat.h>

#include <algorithm>

#include "samples/proof/failure.h"
#include "samples/proof/questions.h"
#include "vaskel/messages.h"

namespace Proof {
namespace {

constexpr int kOverwriteBlock = 1;
constexpr const char* kOverwriteKey = "overwrite";
constexpr std::size_t kMostNamed = 3;

std::vector<std::string> existing(const std::vector<std::string>& outputs) {
    std::vector<std::string> files;
    struct stat status;
    for (const std::string& output : outputs)
        if (output != "-" && stat(output.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
            std::find(files.begin(), files.end(), output) == files.end())
            files.push_back(output);
    return files;
}

// "a", "a and b", "a, b and c", "a, b, c and 2 more"
std::string listed(const std::vector<std::string>& files) {
    std::vector<std::string> names = files;
    if (names.size() > kMostNamed) {
        names.resize(kMostNamed);
        names.push_back(std::to_string(files.size() - kMostNamed) + " more");
    }
    std::string text = names[0];
    for (std::size_t i = 1; i < names.size(); ++i)
        text += (i + 1 < names.size() ? ", " : " and ") + names[i];
    return oneLine(text);
}

}  // namespace

void requirePermission(const std::vector<std::string>& outputs, bool force) {
    const std::vector<std::string> files = existing(outputs);
    if (force || files.empty()) return;
    const bool several = files.size() > 1;
    const std::string names = listed(files);
    const std::string question =
        names + (several ? " exist. Replace them?" : " exists. Replace it?");
    Vaskel::MessageBlocks& blocks = *Vaskel::MessageBlocks::Instance();
    // Each file puts the question; the block lets the first one through.
    const Vaskel::MessageBlockDelimiter batch(kOverwriteBlock);
    for (std::size_t i = 0; i < files.size(); ++i) {
        blocks.MessageAsk(kOverwriteBlock, kOverwriteKey, question.c_str(), several ? "all" : "yes",
                          several ? "none" : "no");
        if (blocks.GetMessageAnswer(kOverwriteBlock, kOverwriteKey) != kAnswerYes)
            throw Failure(
                "nothing was written: " + names +
                (several ? " exist (--force replaces them)" : " exists (--force replaces it)"));
    }
}

}  // namespace Proof
