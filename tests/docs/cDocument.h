#pragma once

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/cProgram.h"
#include "tests/tools/cTempFolder.h"

/// A Markdown file and the blocks between its "```" lines.
struct cDocument {
  struct cBlock {
    std::string language;
    std::vector<std::string> lines;  ///< without the block's indentation
  };

  explicit cDocument(const std::string& file) : name(file) {
    bool isInside = false;
    std::size_t indentation = 0;
    for (const std::string& line : linesOf(readFile(SOURCE_PATH "/" + file))) {
      const std::size_t fence = line.find("```");
      if (fence != std::string::npos) {
        isInside = !isInside;
        indentation = fence;
        if (isInside) blocks.push_back({line.substr(fence + 3), {}});
      } else if (isInside) {
        blocks.back().lines.push_back(line.size() < indentation ? "" : line.substr(indentation));
      }
    }
  }

  /// README.md, CONTRIBUTING.md and all below docs/.
  static std::vector<cDocument> all() {
    namespace fs = std::filesystem;
    std::vector<cDocument> documents{cDocument("README.md"), cDocument("CONTRIBUTING.md")};
    for (const auto& entry : fs::recursive_directory_iterator(SOURCE_PATH "/docs")) {
      if (entry.path().extension() != ".md") continue;
      documents.emplace_back(fs::relative(entry.path(), SOURCE_PATH).string());
    }
    return documents;
  }

  std::string name;
  std::vector<cBlock> blocks;
};
