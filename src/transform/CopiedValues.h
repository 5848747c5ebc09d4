/// @file
/// Values copied from one document to another by tables, for whatever maps one to one: from a
/// device's answer to a result, from a request to an envelope.
///
/// A value whose source is missing is left out; a source without text gives an empty element.
#ifndef ONVIF_CLIENT_TRANSFORM_COPIEDVALUES_H
#define ONVIF_CLIENT_TRANSFORM_COPIEDVALUES_H

#include <span>

#include "common/XmlDocument.h"

namespace onvif_client {

/// One row of a copying table. @p source is a path from the element that the table is applied to;
/// its last step may be an attribute ("Bounds/@width"), and a path that is only "@token" is an
/// attribute of that element itself. A "*" behind it copies every element of the last name, in the
/// device's order ("TextOption/Type*"); without it the first one counts.
struct CopiedValue {
    const char* source;
    const char* element;
    /// Not empty: @p element is a group, written when the source element exists, and these are its
    /// rows, relative to the source.
    std::span<const CopiedValue> parts = {};
};

/// Appends what the rows find, in their order. Null elements give and get nothing.
void CopyValues(const XMLElement* from, XMLElement* to, std::span<const CopiedValue> rows);

}  // namespace onvif_client

#endif
