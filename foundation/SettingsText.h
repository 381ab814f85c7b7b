#pragma once

/// @file
/// The text operations of the settings files. The three radial-basis classes have members of the same purpose, with
/// these behind them.

/// Splits a settings line at its first "=" into `key` and `value`. Each of them has room for the whole line, and one
/// of them may be `line` itself.
///
/// `key` is what stands before the "=", without blanks and newlines; tabs stay. `value` begins at the first character
/// behind the "=" that is not a blank and ends at the first newline; blanks at its end stay. Three cases are less
/// obvious. With an empty key the value is empty too. If nothing but blanks follow the "=" in a line without newline,
/// the value begins with the "=" itself. Without a "=", the value is the last character of the line.
/// @return 1 if the line has a "=", else 0
int SplitSettingsLine(char const* line, char* key, char* value);

/// Writes `name` to `result` with its last four characters replaced by `extension`: `case.xyz` gives
/// `case.rbf`.
///
/// Nothing checks that the name has an extension of three letters. A name of fewer than four characters gives the
/// extension alone. The name is cut at 1023 characters first, and so is the result.
/// @param[out] result  1024 characters; may be `name`
/// @return 1
int ReplaceExtension(char* result, char const* extension, char const* name);
