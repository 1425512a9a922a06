// The growing array below big integers.

#include <algorithm>
#include <limits>
#include <new>

#include "encoding/bigint.h"
#include "platform/orlune.h"
#include "util/narrow.h"
#include "vaskel/encoding.h"

namespace Vaskel {

template <class T>
arraytemplate<T>::arraytemplate(std::uint64_t growthStep)
    : mData(nullptr), mCapacity(0), mGrowthStep(growthStep == 0 ? 1 : growthStep) {}

template <class T>
arraytemplate<T>::arraytemplate(const arraytemplate& other)
    : mData(other.mCapacity == 0 ? nullptr : new T[other.mCapacity]),
      mCapacity(other.mCapacity),
      mGrowthStep(other.mGrowthStep) {
    std::copy_n(other.mData, mCapacity, mData);
}

template <class T>
arraytemplate<T>& arraytemplate<T>::operator=(const arraytemplate& other) {
    if (this == &other) return *this;
    if (mCapacity != other.mCapacity) {
        T* const fresh = other.mCapacity == 0 ? nullptr : new T[other.mCapacity];
        delete[] mData;
        mData = fresh;
        mCapacity = other.mCapacity;
    }
    mGrowthStep = other.mGrowthStep;
    std::copy_n(other.mData, mCapacity, mData);
    return *this;
}

template <class T>
arraytemplate<T>::~arraytemplate() {
    delete[] mData;
}

template <class T>
T arraytemplate<T>::operator[](std::uint64_t index) const {
    if (index < mCapacity) return mData[index];
    Orlune::debug("arraytemplate::operator[] >> invalid index: %d, size: %d",
                  wrap32(static_cast<std::int64_t>(index)),
                  wrap32(static_cast<std::int64_t>(mCapacity)));
    return 0;
}

template <class T>
T& arraytemplate<T>::operator[](std::uint64_t index) {
    if (index < mCapacity) return mData[index];
    const std::uint64_t steps = (index - mCapacity) / mGrowthStep + 1;
    constexpr std::uint64_t most = std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T);
    if (steps > (most - mCapacity) / mGrowthStep) throw std::bad_alloc();
    const std::uint64_t capacity = mCapacity + steps * mGrowthStep;
    T* const fresh = new T[capacity];
    std::fill(std::copy_n(mData, mCapacity, fresh), fresh + capacity, T(0));
    delete[] mData;
    mData = fresh;
    mCapacity = capacity;
    return mData[index];
}

template class arraytemplate<unsigned short>;

}  // namespace Vaskel
