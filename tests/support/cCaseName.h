#pragma once

#include <gtest/gtest.h>

#include <string>

/// Names the cases of a parameterised test by their field `name`.
struct cCaseName {
  template <typename Case>
  std::string operator()(const testing::TestParamInfo<Case>& info) const {
    return info.param.name;
  }
};
