#include "geometry/intersect_order.h"

namespace Vaskel::Intersect {

ActiveSegment& ActiveOrder::insertBefore(Position above, Index segment, Place left, Place right) {
    ActiveSegment* entry = mFree;
    if (entry) {
        mFree = entry->nextFree;
    } else {
        if (mUsedOfLast == kBlock) {
            mBlocks.push_back(std::make_unique<ActiveSegment[]>(kBlock));
            mUsedOfLast = 0;
        }
        entry = &mBlocks.back()[mUsedOfLast++];
    }
    entry->left = left;
    entry->right = right;
    entry->segment = segment;
    mTree.insert_before(above, *entry);
    return *entry;
}

void ActiveOrder::erase(Position position) {
    ActiveSegment& entry = *position;
    mTree.erase(position);
    entry.nextFree = mFree;
    mFree = &entry;
}

void ActiveOrder::clear() {
    while (!mTree.empty()) erase(mTree.begin());
}

}  // namespace Vaskel::Intersect
