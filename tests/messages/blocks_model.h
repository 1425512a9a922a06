// Message blocks told in the plainest way: the model that the registry is held
// to, by random uses and by fuzzing.

#ifndef TESTS_MESSAGES_BLOCKS_MODEL_H
#define TESTS_MESSAGES_BLOCKS_MODEL_H

#include <map>
#include <string>

/// A registry in which the state of a block is a word.
class BlocksModel {
 public:
    void activate(int id) { mState[id] = "open"; }
    void deactivate(int id) { mState[id] = "closed"; }
    bool exists(int id) const { return state(id) != "unknown"; }

    /// Whether a question is put to the host.
    bool asks(int id) {
        if (state(id) == "closed" || state(id) == "open and asked") return false;
        if (state(id) == "open") mState[id] = "open and asked";
        return true;
    }
    /// The host has answered.
    void answered(const std::string& key, int answer) { mAnswers[key] = answer; }

    int answer(int id, const std::string& key) const {
        if (state(id) == "closed" || state(id) == "open") return -1;
        const auto kept = mAnswers.find(key);
        return kept == mAnswers.end() ? -1 : kept->second;
    }

 private:
    std::string state(int id) const {
        const auto known = mState.find(id);
        return known == mState.end() ? "unknown" : known->second;
    }

    std::map<int, std::string> mState;
    std::map<std::string, int> mAnswers;
};

#endif
