#pragma once

/// @file
/// The text handling of the settings files, one implementation behind the members of the same purpose in the
/// three radial-basis classes.

/// Splits a settings line at its first "=" into `key` and `value`, which have room for the whole line. Either of
/// them may be `line` itself.
///
/// `key` is what stands before the "=", without blanks and newlines; tabs stay. `value` begins behind the "="
/// at the first character that is not a blank and ends at the first newline; blanks at its end stay. Three
/// cases are less obvious: with an empty key the value is empty too; with nothing but blanks up to the end of
/// a line without newline, the value begins with the "=" itself; without a "=", the value is the last
/// character of the line.
/// @return 1 when the line has a "=", else 0
int SplitSettingsLine(char const* line, char* key, char* value);

/// Writes `name` to `result` with its last four characters replaced by `extension`: `case.xyz` gives
/// `case.rbf`.
///
/// The name's extension must have three letters for that to make sense; it is not looked at. A name of fewer
/// than four characters gives just the extension; a name is cut at 1023 characters first, and so is the
/// result.
/// @param[out] result  1024 characters; may be `name`
/// @return 1
int ReplaceExtension(char* result, char const* extension, char const* name);
