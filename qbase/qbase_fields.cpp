// The header fields and the user block.
#include "platform/base/status.h"
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

// The setter and the getter of a field; the two word fields and the sort mode are returned signed.
#define DREVIX_FIELD(Class, field, Name, In, Out)                                                            \
    void QBaseSet##Name(QBaseHandle base, In value) {                                                        \
        SetField(base, &Class::field, value);                                                                \
    }                                                                                                        \
    Out QBaseGet##Name(QBaseHandle base) {                                                                   \
        return static_cast<Out>(GetField(base, &Class::field));                                              \
    }

// clang-format off
DREVIX_FIELD(QBaseFileHeader, userLong,          UserLong,          std::uint32_t, std::uint32_t)
DREVIX_FIELD(QBaseFileHeader, userData,          UserData,          std::uint32_t, std::uint32_t)
DREVIX_FIELD(QBaseFileHeader, userFlags,         UserFlags,         std::uint32_t, std::uint32_t)
DREVIX_FIELD(QBaseFileHeader, userWord,          UserWord,          std::uint16_t, std::int16_t)
DREVIX_FIELD(QBaseFileHeader, userMode,          UserMode,          std::uint16_t, std::int16_t)
DREVIX_FIELD(QBaseState,      recordsChanged,    RecordsChanged,    bool,          bool)
DREVIX_FIELD(QBaseState,      userFieldsChanged, UserFieldsChanged, bool,          bool)
DREVIX_FIELD(QBaseState,      readOnly,          ReadOnly,          bool,          bool)
DREVIX_FIELD(QBaseState,      sortMode,          SortMode,          std::uint16_t, std::int16_t)
DREVIX_FIELD(QBaseState,      tempLong,          TempLong,          std::uint32_t, std::uint32_t)
DREVIX_FIELD(QBaseState,      tempData,          TempData,          std::uint32_t, std::uint32_t)
// clang-format on

#undef DREVIX_FIELD

void QBaseSetUserRect(QBaseHandle base, const QBaseRect &rect) {
    SetField(base, &QBaseFileHeader::userRect, rect);
}

void QBaseGetUserRect(QBaseHandle base, QBaseRect *rect) {
    if (base != nullptr && rect != nullptr) {
        *rect = base->file.userRect;
    }
}

OSErr QBaseSetUserBlock(QBaseHandle base, const void *data, std::uint32_t size) {
    if (base == nullptr) {
        return paramErr;
    }
    const MemoryRequest request;
    const std::uint32_t wanted = data != nullptr ? size : 0;
    const OSErr status = base->userBlock.Resize(wanted);
    if (status == noErr && wanted > 0) {
        std::memmove(base->userBlock.Data(), data, wanted); // data may point into the old block
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
