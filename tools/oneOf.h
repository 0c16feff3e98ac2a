#pragma once

#include <CLI/CLI.hpp>

namespace tool {

/// Takes one of the names of `table` for its value. `--help` lists the names, and the completion
/// of command lines reads them there.
template <class tTable>
CLI::CheckedTransformer oneOf(const tTable& table) {
  CLI::CheckedTransformer transformer(table);
  transformer.description(CLI::detail::generate_map(table, true));
  return transformer;
}

}  // namespace tool
