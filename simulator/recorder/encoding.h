// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sondixrec {

/// \name Parts of a record as JSON
/// Each function appends to \a json.
/// \{
void appendInteger(std::string &json, long long value);
/// The shortest digits that give exactly \a value again; always with a point or an exponent, so that -0.0 keeps its
/// sign. Values that are not finite are texts: "inf", "-inf", "nan", or "nan:" and the bits for any other NaN.
void appendDouble(std::string &json, double value);
/// A text in UTF-8.
void appendUtf8(std::string &json, std::string_view text);
/// Bytes of the C interface: a text if all of them are characters of windows-1250, else {"base64": ...}.
void appendBytes(std::string &json, std::string_view bytes);
void appendBase64(std::string &json, std::string_view bytes);
/// \}

/// What appendDouble() has written as text; nullopt for any other text.
std::optional<double> doubleOfText(std::string_view text);
std::optional<std::string> bytesOfBase64(std::string_view text);

} // namespace sondixrec
