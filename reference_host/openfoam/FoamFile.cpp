#include "reference_host/openfoam/FoamFile.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MessageText.h"

namespace reference_host {
namespace {

std::string ExistingFile(std::string const& folder, std::string const& name) {
  std::string path = (std::filesystem::path(folder) / name).string();
  std::string const compressed = path + ".gz";
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored) && std::filesystem::exists(compressed, ignored)) {
    throw MeshError(compressed + ": compressed files cannot be read; unpack it with gunzip");
  }
  return path;
}

}  // namespace

FoamFile::FoamFile(std::string const& folder, std::string const& name)
    : file_(ExistingFile(folder, name)), text_(file_, TextCursor::Comments::CStyle) {
  ReadHeader();
}

// FoamFile { format ascii; class faceList; ... }
void FoamFile::ReadHeader() {
  if (text_.AtEnd() || text_.Name("FoamFile") != "FoamFile") {
    text_.Fail("not an OpenFOAM file: it does not begin with FoamFile");
  }
  text_.Expect('{');
  for (std::string key = Keyword(); !key.empty(); key = Keyword()) {
    std::string const value = Value();
    if (key == "format" && value != "ascii") {
      text_.Fail("format " + Quoted(value) + " cannot be read; write it in format ascii");
    }
    if (key == "class") className_ = value;
  }
}

std::string FoamFile::Keyword() {
  if (text_.Accept('}')) return {};
  std::string_view const keyword = text_.Name("a keyword or '}'");
  if (keyword.front() == '#' || keyword.front() == '$') text_.Fail("directives and macros cannot be read");
  return std::string(keyword);
}

std::string FoamFile::Value() {
  std::string first;
  int depth = 0;  // of parentheses and braces; an entry ends with ';' or by closing its first brace
  for (bool isFirst = true;; isFirst = false) {
    char const c = text_.Peek();
    if (c == '(' || c == '{') {
      text_.Expect(c);
      ++depth;
    } else if (c == ')' || c == '}') {
      text_.Expect(c);
      if (--depth < 0) text_.Fail("an entry is not closed by ';'");
      if (depth == 0 && c == '}') return first;
    } else if (c == ';') {
      text_.Expect(c);
      if (depth == 0) return first;
    } else if (c == '"') {
      text_.QuotedString("a text");
    } else if (c == '$') {
      text_.Macro();  // its name may be in braces
    } else {
      std::string_view const word = text_.Word("the end of an entry");
      if (isFirst) first = word;
    }
  }
}

}  // namespace reference_host
