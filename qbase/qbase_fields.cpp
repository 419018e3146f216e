// The header fields and the user block.
#include "platform/status.h"
#include "qbase/qbase_internal.h"

#include <cstring>

namespace drevix {
namespace {

// A field of the header's stored part (Class is QBaseFileHeader) or of the rest (QBaseState).
template <class Class, class Value>
void SetField(QBaseHandle base, Value Class::*field, Value value) {
    if (base == nullptr) {
        return;
    }
    if constexpr (std::is_same_v<Class, QBaseFileHeader>) {
        base->file.*field = value;
        base->userFieldsChanged = true;
    } else {
        base->*field = value;
    }
}

template <class Class, class Value>
Value GetField(QBaseHandle base, Value Class::*field) {
    if (base == nullptr) {
        return Value{};
    }
    if constexpr (std::is_same_v<Class, QBaseFileHeader>) {
        return base->file.*field;
    } else {
        return base->*field;
    }
}

} // namespace

void QBaseSetUserLong(QBaseHandle base, std::uint32_t value) {
    SetField(base, &QBaseFileHeader::userLong, value);
}

std::uint32_t QBaseGetUserLong(QBaseHandle base) {
    return GetField(base, &QBaseFileHeader::userLong);
}

void QBaseSetUserData(QBaseHandle base, std::uint32_t value) {
    SetField(base, &QBaseFileHeader::userData, value);
}

std::uint32_t QBaseGetUserData(QBaseHandle base) {
    return GetField(base, &QBaseFileHeader::userData);
}

void QBaseSetUserFlags(QBaseHandle base, std::uint32_t value) {
    SetField(base, &QBaseFileHeader::userFlags, value);
}

std::uint32_t QBaseGetUserFlags(QBaseHandle base) {
    return GetField(base, &QBaseFileHeader::userFlags);
}

void QBaseSetUserWord(QBaseHandle base, std::uint16_t value) {
    SetField(base, &QBaseFileHeader::userWord, value);
}

std::int16_t QBaseGetUserWord(QBaseHandle base) {
    return static_cast<std::int16_t>(GetField(base, &QBaseFileHeader::userWord));
}

void QBaseSetUserMode(QBaseHandle base, std::uint16_t value) {
    SetField(base, &QBaseFileHeader::userMode, value);
}

std::int16_t QBaseGetUserMode(QBaseHandle base) {
    return static_cast<std::int16_t>(GetField(base, &QBaseFileHeader::userMode));
}

void QBaseSetUserRect(QBaseHandle base, const QBaseRect &rect) {
    SetField(base, &QBaseFileHeader::userRect, rect);
}

void QBaseGetUserRect(QBaseHandle base, QBaseRect *rect) {
    if (base != nullptr && rect != nullptr) {
        *rect = base->file.userRect;
    }
}

void QBaseSetRecordsChanged(QBaseHandle base, bool changed) {
    SetField(base, &QBaseState::recordsChanged, changed);
}

bool QBaseGetRecordsChanged(QBaseHandle base) {
    return GetField(base, &QBaseState::recordsChanged);
}

void QBaseSetUserFieldsChanged(QBaseHandle base, bool changed) {
    SetField(base, &QBaseState::userFieldsChanged, changed);
}

bool QBaseGetUserFieldsChanged(QBaseHandle base) {
    return GetField(base, &QBaseState::userFieldsChanged);
}

void QBaseSetReadOnly(QBaseHandle base, bool readOnly) {
    SetField(base, &QBaseState::readOnly, readOnly);
}

bool QBaseGetReadOnly(QBaseHandle base) {
    return GetField(base, &QBaseState::readOnly);
}

void QBaseSetSortMode(QBaseHandle base, std::uint16_t mode) {
    SetField(base, &QBaseState::sortMode, mode);
}

std::int16_t QBaseGetSortMode(QBaseHandle base) {
    return static_cast<std::int16_t>(GetField(base, &QBaseState::sortMode));
}

void QBaseSetTempLong(QBaseHandle base, std::uint32_t value) {
    SetField(base, &QBaseState::tempLong, value);
}

std::uint32_t QBaseGetTempLong(QBaseHandle base) {
    return GetField(base, &QBaseState::tempLong);
}

void QBaseSetTempData(QBaseHandle base, std::uint32_t value) {
    SetField(base, &QBaseState::tempData, value);
}

std::uint32_t QBaseGetTempData(QBaseHandle base) {
    return GetField(base, &QBaseState::tempData);
}

OSErr QBaseSetUserBlock(QBaseHandle base, const void *data, std::uint32_t size) {
    if (base == nullptr) {
        return paramErr;
    }
    const MemoryRequest request;
    const std::uint32_t wanted = data != nullptr ? size : 0;
    const OSErr status = base->userBlock.Resize(wanted);
    if (status == noErr && wanted > 0) {
        std::memmove(base->userBlock.Data(), data, wanted); // a part of the old block may be what is to stay
    }
    return status;
}

const void *QBaseGetUserBlock(QBaseHandle base, std::uint32_t *size) {
    const bool present = base != nullptr && base->userBlock.Size() > 0;
    if (size != nullptr) {
        *size = present ? static_cast<std::uint32_t>(base->userBlock.Size()) : 0;
    }
    return present ? base->userBlock.Data() : nullptr;
}

} // namespace drevix
