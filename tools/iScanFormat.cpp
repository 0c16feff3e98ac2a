#include "tools/iScanFormat.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <vector>

#include "tools/timestamp.h"

namespace tool {

namespace {

/// Readings are whole millimetres.
long millimetres(const cScanPoint& point) { return std::lround(point.distance); }

std::string timeOf(const cScan& scan) { return isoTimestamp(scan.timeStamp.time); }

/// One line a scan, for people.
class cTableFormat : public iScanFormat {
 public:
  explicit cTableFormat(const cScanRange& wanted) : range(wanted) {}

  std::string header() const override {
    return fmt::format(ROW, "scan", "time", "points", "nearest mm", "farthest mm", "scans/s");
  }

  std::string rows(std::size_t number, const cScan& scan, double rate) const override {
    std::vector<long> valid;
    for (const cScanPoint& point : scan.points) {
      if (range.isValid(point.distance)) valid.push_back(millimetres(point));
    }
    const auto [nearest, farthest] = std::minmax_element(valid.begin(), valid.end());
    return fmt::format(ROW, number, timeOf(scan), scan.points.size(),
                       valid.empty() ? "-" : fmt::to_string(*nearest),
                       valid.empty() ? "-" : fmt::to_string(*farthest),
                       rate > 0 ? fmt::format("{:.2f}", rate) : "-");
  }

 private:
  static constexpr auto ROW = FMT_STRING("{:>6}  {:<32}  {:>6}  {:>10}  {:>11}  {:>7}\n");

  const cScanRange& range;
};

/// One row a point.
class cCsvFormat : public iScanFormat {
 public:
  std::string header() const override { return "scan,timestamp,index,angle_rad,distance_mm\n"; }

  std::string rows(std::size_t number, const cScan& scan, double) const override {
    const std::string prefix = fmt::format("{},{}", number, timeOf(scan));
    std::string rows;
    rows.reserve(scan.points.size() * (prefix.size() + sizeof ",9999,-3.141593,60000\n"));
    std::size_t index = 0;
    for (const cScanPoint& point : scan.points) {
      fmt::format_to(std::back_inserter(rows), "{},{},{:.6f},{}\n", prefix, index++, point.angle,
                     millimetres(point));
    }
    return rows;
  }
};

/// One object a scan, each on a line.
class cJsonFormat : public iScanFormat {
 public:
  std::string header() const override { return ""; }

  std::string rows(std::size_t number, const cScan& scan, double) const override {
    nlohmann::ordered_json object = {{"scan", number},
                                     {"timestamp", timeOf(scan)},
                                     {"first_angle", scan.firstAngle},
                                     {"angle_step", scan.angleStep}};
    auto& distances = object["distances"] = nlohmann::ordered_json::array();
    for (const cScanPoint& point : scan.points) distances.push_back(millimetres(point));
    return object.dump() + "\n";
  }
};

}  // namespace

const std::map<std::string, eScanFormat>& scanFormats() {
  static const std::map<std::string, eScanFormat> formats = {
      {"table", eScanFormat::TABLE}, {"csv", eScanFormat::CSV}, {"json", eScanFormat::JSON}};
  return formats;
}

std::unique_ptr<iScanFormat> makeScanFormat(eScanFormat format, const cScanRange& range) {
  switch (format) {
    case eScanFormat::CSV:
      return std::make_unique<cCsvFormat>();
    case eScanFormat::JSON:
      return std::make_unique<cJsonFormat>();
    case eScanFormat::TABLE:
      break;
  }
  return std::make_unique<cTableFormat>(range);
}

}  // namespace tool
