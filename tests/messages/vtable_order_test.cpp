// The order of virtual operations is part of the interface: hosts that were
// built earlier call and implement them by their place.

#include <doctest/doctest.h>

#include <cstdint>
#include <cstring>

#include "vaskel/messages.h"

#if defined(__x86_64__)

namespace {

using namespace Vaskel;

// The place of a virtual operation in its class's table. Itanium C++ ABI,
// section 2.3: a pointer to a virtual member is 1 plus the offset in the table.
template <class Member>
int place(Member member) {
    std::intptr_t words[2];
    static_assert(sizeof member == sizeof words);
    std::memcpy(words, &member, sizeof words);
    return words[0] % 8 == 1 ? static_cast<int>(words[0] / 8) : -1;  // -1: not virtual
}

TEST_CASE("the host's interfaces begin with their one operation") {
    CHECK(place(&MessageIDConvertor::ConvertMessageID) == 0);
    CHECK(place(&MessageAskHandler::AskMessage) == 0);
}

TEST_CASE("an Error's operations follow the destructor, which takes two places") {
    CHECK(place(&Error::what) == 2);
    CHECK(place(&Error::GetTitle) == 3);
    CHECK(place(&Error::GetDescription) == 4);
    CHECK(place(&Error::GetTimeStamp) == 5);
    CHECK(place(&Error::Clone) == 6);
    CHECK(place(&Error::GetVolatility) == -1);
    CHECK(place(&Orlune::Core::Error::GetDescription) == 4);
}

TEST_CASE("blocks have no virtual operation but the destructor") {
    CHECK(place(&MessageBlocks::ActivateBlock) == -1);
    CHECK(place(&MessageBlocks::GetMessageAnswer) == -1);
    CHECK(place(&MessageBlocks::Exists) == -1);
    CHECK(sizeof(MessageBlockDelimiter) == 2 * sizeof(void*));  // the table and the number
}

}  // namespace

#endif
