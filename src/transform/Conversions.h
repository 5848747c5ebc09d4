/// @file
/// Conversions between the device's notations and ours.
#ifndef ONVIF_CLIENT_TRANSFORM_CONVERSIONS_H
#define ONVIF_CLIENT_TRANSFORM_CONVERSIONS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace onvif_client {

/// A prefix length in dotted form: 20 gives "255.255.240.0". Lengths from 0 to 32 are meaningful.
std::string PrefixLengthToNetmask(int length);

/// The set bits of a dotted netmask, contiguous or not: "255.0.255.0" gives 16. Numbers that do not
/// parse count as 0; an empty text gives -1.
int NetmaskToPrefixLength(const std::string& netmask);

/// An ISO 8601 duration in whole seconds: "PT1M30S" gives 90. A month count is read as minutes. A
/// text that does not start with "P" gives 0, no text -1.
std::int64_t DurationToSeconds(const std::string& duration);

/// The decimal number that @p text starts with, after blanks, held within 32 bits.
std::optional<int> ReadInt(std::string_view text);
/// The same; 0 without one.
int ToInt(std::string_view text);

/// The same for a real number ("0.5", "-1e2"); 0 without one and for one that no double holds.
double ToReal(std::string_view text);
/// A number with that many decimals, as "%.*f" writes it in the C locale: an application's locale
/// must not reach the device.
std::string DecimalText(double value, int decimals);

/// True for exactly "true", "TRUE" and "1".
bool IsTrue(std::string_view text);

}  // namespace onvif_client

#endif
