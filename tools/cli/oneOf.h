#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace tool {

/// Takes one of the names of `table`, which must outlive it, for its value. `--help` lists the
/// names, and the completion of command lines reads them there.
template <class tTable>
CLI::Validator oneOf(const tTable& table) {
  const std::string names = CLI::detail::generate_map(table, true);
  const auto translate = [&table, names](std::string& word) -> std::string {
    const auto known = table.find(word);
    if (known == table.end()) return "\"" + word + "\" is not one of " + names;
    word = std::to_string(static_cast<int>(known->second));  // as which CLI11 reads an enum
    return "";
  };
  return CLI::Validator(translate, names);
}

}  // namespace tool
