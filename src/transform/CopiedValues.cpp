#include "transform/CopiedValues.h"

namespace onvif_client {

namespace {

void CopyElement(const XMLElement* found, XMLElement* to, const CopiedValue& row) {
    if (row.parts.empty()) {
        Append(to, row.element, TextOf(found));
    } else {
        CopyValues(found, Append(to, row.element), row.parts);
    }
}

void CopyValue(const XMLElement* from, XMLElement* to, const CopiedValue& row) {
    std::string_view source = row.source;
    if (source.ends_with('*')) {
        source.remove_suffix(1);
        const std::size_t slash = source.rfind('/');
        const bool direct = slash == std::string_view::npos;
        const XMLElement* owner = direct ? from : FindElement(from, source.substr(0, slash));
        source.remove_prefix(direct ? 0 : slash + 1);
        for (const XMLElement* each : Children(owner, source)) {
            CopyElement(each, to, row);
        }
        return;
    }
    const std::size_t at = source.find('@');
    if (at != std::string_view::npos) {
        const XMLElement* owner = at == 0 ? from : FindElement(from, source.substr(0, at - 1));
        if (const char* value = AttributeOf(owner, row.source + at + 1)) {
            Append(to, row.element, value);
        }
        return;
    }
    if (const XMLElement* found = FindElement(from, source)) {
        CopyElement(found, to, row);
    }
}

}  // namespace

void CopyValues(const XMLElement* from, XMLElement* to, std::span<const CopiedValue> rows) {
    for (const CopiedValue& row : rows) {
        CopyValue(from, to, row);
    }
}

}  // namespace onvif_client
