// A LibICCProfile that records its calls, in place of the embedded one.

#ifndef TESTS_COLOUR_RECORDING_LINKS_H
#define TESTS_COLOUR_RECORDING_LINKS_H

#include <string>
#include <vector>

/// Handles are small numbers as pointers: profiles from 1, links that
/// MakeProfileLink makes from 101. A matching call adds 1 to every byte, so that
/// the number of links shows in the result.
struct RecordingLinks {
    std::vector<std::string> calls;
    int failAtMatch = 0;       // the n-th matching call returns false
    int throwAtMatch = 0;      // the n-th matching call throws
    bool refuseLinks = false;  // MakeProfileLink gives null
    int matches = 0;
    int linksMade = 0;

    struct Thrown {};

    RecordingLinks();
    ~RecordingLinks();
    std::vector<std::string> take();
};

#endif
