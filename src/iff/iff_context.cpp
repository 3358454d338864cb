#include "iff/iff_context.h"

#include <iterator>

namespace vistel {

namespace {

constexpr uint32_t formFlags = iffFlagGroup | iffFlagForm;
constexpr uint32_t concatenationFlags = iffFlagGroup | iffFlagConcatenation;
constexpr uint32_t listFlags = iffFlagGroup | iffFlagList | iffFlagMayHoldProperties;
constexpr uint32_t propertyFlags = iffFlagGroup | iffFlagProperty;

constexpr IffGroupRow groupTable[] = {
    // clang-format off
    {iffId("FOR4"), IffGroupKind::form,          3, formFlags},
    {iffId("FORM"), IffGroupKind::form,          1, formFlags},
    {iffId("FOR8"), IffGroupKind::form,          7, formFlags},
    {iffId("CAT4"), IffGroupKind::concatenation, 3, concatenationFlags},
    {iffId("CAT "), IffGroupKind::concatenation, 1, concatenationFlags},
    {iffId("CAT8"), IffGroupKind::concatenation, 7, concatenationFlags},
    {iffId("LIS4"), IffGroupKind::list,          3, listFlags},
    {iffId("LIST"), IffGroupKind::list,          1, listFlags},
    {iffId("LIS8"), IffGroupKind::list,          7, listFlags},
    {iffId("PRO4"), IffGroupKind::property,      3, propertyFlags},
    {iffId("PROP"), IffGroupKind::property,      1, propertyFlags},
    {iffId("PRO8"), IffGroupKind::property,      7, propertyFlags},
    {iffId("PATH"), IffGroupKind::reserved,      0, 0},
    {iffId("INCL"), IffGroupKind::reserved,      0, 0},
    // clang-format on
};
static_assert(std::size(groupTable) == 14);

}  // namespace

std::span<const IffGroupRow> iffGroupTable() { return groupTable; }

const IffGroupRow* findIffGroup(int32_t id) {
    for (const IffGroupRow& row : groupTable) {
        if (row.id == id) return &row;
    }
    return nullptr;
}

}  // namespace vistel
