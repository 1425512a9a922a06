// Pemmit: objects with children, and queryseq.

#include <climits>
#include <cstdint>

#include "adapter.h"
#include "check.h"

using namespace Check;
using Pemmit::kFlagChildren;
using Pemmit::kFlagPath;

namespace {

// What a sequence over list delivers.
std::vector<const Pemmit::Object*> sequence(const Pemmit::Object* list) {
    std::vector<const Pemmit::Object*> objects;
    Pemmit::queryseq query;
    for (const Pemmit::Object* at = query.quebeg(list, nullptr); at; at = at->next) {
        objects.push_back(at);
        if (objects.size() > 100000) {
            FAIL_CHECK("the sequence does not end");
            break;
        }
    }
    return objects;
}

PathPtr makeCompound() {
    PathPtr compound(Adapter::makeCompound());
    if (!compound) notChecked("the host has no objects with children");
    return compound;
}

}  // namespace

TEST_CASE("Pemmit::queryseq: a path without children is its own one contour") {
    const PathPtr path = closedPath({{1, 2}, {3, 4}, {5, 7}});
    Pemmit::queryseq query;
    CHECK(query.quebeg(path.get(), nullptr) == path.get());
    CHECK(path->next == nullptr);
    const PathPtr empty(Pemmit::patbeg());
    CHECK(query.quebeg(empty.get(), nullptr) == empty.get());
}

TEST_CASE("Pemmit::queryseq: the children in order, each linked to the next") {
    const PathPtr compound = makeCompound();
    if (!compound) return;
    CHECK((compound->flags & (kFlagPath | kFlagChildren)) == kFlagChildren);
    std::vector<const Pemmit::Object*> children;
    CHECK(sequence(compound.get()) == children);
    for (int i = 0; i < 50; ++i) {
        Pemmit::Path* const child = closedPath({{i, 0}, {i, 9}, {i + 5, 4}}).release();
        REQUIRE(Adapter::addChild(compound.get(), child));
        children.push_back(child);
        CHECK(sequence(compound.get()) == children);
    }
    Pemmit::queryseq query;
    CHECK(query.quebeg(compound.get(), children[20]) == children[20]);
    // As a list of its own a child is its one contour, whatever comes after it.
    CHECK(query.quebeg(children[20], nullptr) == children[20]);
    for (int i = 0; i < 50; ++i)
        checkWalks(static_cast<const Pemmit::Path*>(children[static_cast<std::size_t>(i)]),
                   {{i, 0}, {i, 9}, {i + 5, 4}, {i, 0}});
}

TEST_CASE("Pemmit::scan: the own walk of an object with children is empty") {
    const PathPtr compound = makeCompound();
    if (!compound) return;
    REQUIRE(Adapter::addChild(compound.get(), closedPath({{1, 2}, {3, 4}, {5, 7}}).release()));
    for (int start : {-1, 0, 1}) {
        CHECK(walk(compound.get(), 0, start).empty());
        CHECK(walk(compound.get(), 1, start).empty());
    }
    CHECK(Pemmit::patsiz(compound.get()) == 0);
}

TEST_CASE("Pemmit::Object::box: with children the union of theirs, at every change") {
    const PathPtr compound = makeCompound();
    if (!compound) return;
    CHECK(sameBox(compound->box, Pemmit::Box{INT_MAX, INT_MAX, INT_MIN, INT_MIN}));
    Pemmit::Path* const small = closedPath({{1, 2}, {3, 4}}).release();
    REQUIRE(Adapter::addChild(compound.get(), small));
    CHECK(sameBox(compound->box, small->box));
    Pemmit::Path* const empty = Pemmit::patbeg();
    REQUIRE(Adapter::addChild(compound.get(), empty));
    CHECK(sameBox(compound->box, small->box));
    Pemmit::Path* const large = closedPath({{-10, 0}, {30, -40}}).release();
    REQUIRE(Adapter::addChild(compound.get(), large));
    CHECK(sameBox(compound->box, Pemmit::Box{-10, -40, 30, 4}));
    Pemmit::patlin(small, 2, 50);
    CHECK(sameBox(compound->box, Pemmit::Box{-10, -40, 30, 50}));
    Pemmit::patlin(empty, 100, 0);
    CHECK(sameBox(compound->box, Pemmit::Box{-10, -40, 100, 50}));
    Pemmit::objrem(large);
    CHECK(sameBox(compound->box, Pemmit::Box{1, 0, 100, 50}));
}

TEST_CASE("Pemmit::Object::box: true in every ancestor") {
    const PathPtr outer = makeCompound();
    if (!outer) return;
    Pemmit::Path* const inner = Adapter::makeCompound();
    Pemmit::Path* const path = closedPath({{1, 1}, {2, 2}}).release();
    REQUIRE(Adapter::addChild(outer.get(), inner));
    REQUIRE(Adapter::addChild(inner, path));
    CHECK(sameBox(outer->box, Pemmit::Box{1, 1, 2, 2}));
    Pemmit::patlin(path, 9, -9);
    CHECK(sameBox(inner->box, Pemmit::Box{1, -9, 9, 2}));
    CHECK(sameBox(outer->box, Pemmit::Box{1, -9, 9, 2}));
    Pemmit::objrem(path);
    CHECK(sameBox(inner->box, Pemmit::Box{}));
    CHECK(sameBox(outer->box, Pemmit::Box{}));
}

TEST_CASE("Pemmit::objrem: a child leaves its parent's list") {
    const PathPtr compound = makeCompound();
    if (!compound) return;
    std::vector<const Pemmit::Object*> children;
    for (int i = 0; i < 6; ++i) {
        Pemmit::Path* const child = closedPath({{i, i}}).release();
        REQUIRE(Adapter::addChild(compound.get(), child));
        children.push_back(child);
    }
    for (std::size_t gone : {2, 0, 3, 1, 0, 0}) {  // inside, first, last, the rest
        CAPTURE(gone);
        Pemmit::objrem(const_cast<Pemmit::Object*>(children[gone]));
        children.erase(children.begin() + static_cast<std::ptrdiff_t>(gone));
        CHECK(sequence(compound.get()) == children);
    }
    Pemmit::Path* const child = closedPath({{1, 1}}).release();
    REQUIRE(Adapter::addChild(compound.get(), child));
    CHECK(sequence(compound.get()) == std::vector<const Pemmit::Object*>{child});
}

TEST_CASE("Pemmit::patdup: the copy of an object with children has copies of all below it") {
    PathPtr compound = makeCompound();
    if (!compound) return;
    Pemmit::Path* const inner = Adapter::makeCompound();
    Pemmit::Path* const first = closedPath({{1, 1}, {2, 5}, {3, 3}}).release();
    REQUIRE(Adapter::addChild(compound.get(), first));
    REQUIRE(Adapter::addChild(compound.get(), inner));
    REQUIRE(Adapter::addChild(inner, openPath({{7, 7}, {8, 9}}).release()));
    const PathPtr copy(Pemmit::patdup(compound.get()));
    compound.reset();

    CHECK((copy->flags & (kFlagPath | kFlagChildren)) == kFlagChildren);
    CHECK(sameBox(copy->box, Pemmit::Box{1, 1, 8, 9}));
    const auto children = sequence(copy.get());
    REQUIRE(children.size() == 2);
    checkWalks(static_cast<const Pemmit::Path*>(children[0]), {{1, 1}, {2, 5}, {3, 3}, {1, 1}});
    CHECK(sameBox(children[1]->box, Pemmit::Box{7, 7, 8, 9}));
    const auto grandchildren = sequence(children[1]);
    REQUIRE(grandchildren.size() == 1);
    checkWalks(static_cast<const Pemmit::Path*>(grandchildren[0]), {{7, 7}, {8, 9}});

    // The copy of a child stands alone.
    const PathPtr alone(Pemmit::patdup(static_cast<const Pemmit::Path*>(children[0])));
    CHECK(alone->next == nullptr);
    checkWalks(alone.get(), {{1, 1}, {2, 5}, {3, 3}, {1, 1}});
}
