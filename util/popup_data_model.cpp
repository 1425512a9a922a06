// The model of a pop-up choice.

#include <cstdint>

#include "vaskel/util.h"

namespace Vaskel {

PopupDataModel::PopupDataModel(int valueIndex, const int* values, const char* const* descriptions)
    : mValueIndex(valueIndex), mValues(values), mDescriptions(descriptions) {}

PopupDataModel::PopupDataModel(const PopupDataModel& other)
    : mValueIndex(other.mValueIndex), mValues(other.mValues), mDescriptions(other.mDescriptions) {}

PopupDataModel& PopupDataModel::operator=(const PopupDataModel& other) {
    mValueIndex = other.mValueIndex;
    mValues = other.mValues;
    mDescriptions = other.mDescriptions;
    return *this;
}

PopupDataModel::~PopupDataModel() { mChanged.disconnect_all_slots(); }

long PopupDataModel::GetValue() const { return GetSelection(); }
void PopupDataModel::SetValue(long value) { SetSelection(static_cast<int>(value)); }

int PopupDataModel::GetSelection() const { return mValues[mValueIndex]; }

int PopupDataModel::GetValueIndex() const { return mValueIndex; }
int PopupDataModel::GetValueByIndex(int index) const { return mValues[index]; }

const char* PopupDataModel::GetDescription(int index) const {
    return mDescriptions ? mDescriptions[index] : nullptr;
}

int PopupDataModel::GetIndex(int value) const { return findIndex(value); }

int PopupDataModel::GetNumberOfOptions() const {
    int count = 0;
    while (mDescriptions && mDescriptions[count]) ++count;
    return count;
}

int PopupDataModel::findIndex(int value) const {
    for (int i = 0;; ++i) {
        if (i > 0 && mValues[i] == 0 && !(mDescriptions && mDescriptions[i])) return -1;
        if (mValues[i] == value) return i;
    }
}

// A value that is not in the list chooses the first entry, without any report:
// hosts hand over stored values as they are and show what comes of them.
// Test: "an unknown value falls back to the first option".
void PopupDataModel::SetSelection(int value) {
    const int found = findIndex(value);
    const std::int32_t index = found < 0 ? 0 : found;
    if (index == mValueIndex) return;
    // A listener may destroy the model while the signal is at work. A slot that
    // stands for the signal tracks what is at work, and its lock keeps that
    // alive. Both allocate, so they come before the choice changes.
    const boost::signals2::slot<void()> standIn(mChanged);
    const boost::signals2::slot_base::locked_container_type alive = standIn.lock();
    mValueIndex = index;
    mChanged();
}

}  // namespace Vaskel
