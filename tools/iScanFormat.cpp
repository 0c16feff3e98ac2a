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
  explicit cTableFormat(const cScanRange& range) : range(range) {}

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

/// A field of CSV, quoted where its text needs that (RFC 4180).
std::string csvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + "\"";
}

/// Millimetres with one decimal, and no "-0.0".
double tenths(double millimetres) { return std::round(millimetres * 10) / 10 + 0.0; }

/// One row a point.
class cCsvFormat : public iScanFormat {
 public:
  cCsvFormat(const cScanRange& range, const cOrigin& origin, const cCsvColumns& columns)
      : range(range), columns(columns) {
    if (!columns.hasOrigin) return;
    suffix = fmt::format(",{},{},{}", csvField(origin.device), csvField(origin.product),
                         csvField(origin.serial));
  }

  std::string header() const override {
    return fmt::format("scan,timestamp,index,angle_rad,distance_mm{}{}\n",
                       columns.hasPosition ? ",x_mm,y_mm" : "",
                       columns.hasOrigin ? ",device,product,serial" : "");
  }

  std::string rows(std::size_t number, const cScan& scan, double) const override {
    const std::string prefix = fmt::format("{},{}", number, timeOf(scan));
    std::string rows;
    rows.reserve(
        scan.points.size() *
        (prefix.size() + sizeof ",9999,-3.141593,60000,-60000.0,-60000.0\n" + suffix.size()));
    std::size_t index = 0;
    for (const cScanPoint& point : scan.points) {
      fmt::format_to(std::back_inserter(rows), "{},{},{:.6f},{}", prefix, index++, point.angle,
                     millimetres(point));
      if (columns.hasPosition) addPosition(rows, point);
      rows += suffix + "\n";
    }
    return rows;
  }

 private:
  void addPosition(std::string& rows, const cScanPoint& point) const {
    if (!range.isValid(point.distance)) {
      rows += ",,";
      return;
    }
    fmt::format_to(std::back_inserter(rows), ",{:.1f},{:.1f}",
                   tenths(point.distance * std::cos(point.angle)),
                   tenths(point.distance * std::sin(point.angle)));
  }

  const cScanRange& range;
  const cCsvColumns columns;
  std::string suffix;
};

/// One object a scan, each on a line.
class cJsonFormat : public iScanFormat {
 public:
  explicit cJsonFormat(const cOrigin& origin) : origin(origin) {}

  std::string header() const override { return ""; }

  std::string rows(std::size_t number, const cScan& scan, double) const override {
    nlohmann::ordered_json object = {{"scan", number},
                                     {"timestamp", timeOf(scan)},
                                     {"device", origin.device},
                                     {"product", origin.product},
                                     {"serial", origin.serial},
                                     {"first_angle", scan.firstAngle},
                                     {"angle_step", scan.angleStep}};
    auto& distances = object["distances"] = nlohmann::ordered_json::array();
    for (const cScanPoint& point : scan.points) distances.push_back(millimetres(point));
    using cHandler = nlohmann::ordered_json::error_handler_t;
    return object.dump(-1, ' ', true, cHandler::replace) + "\n";
  }

 private:
  const cOrigin origin;
};

/// Nothing: only the drawing is asked for.
class cNoFormat : public iScanFormat {
 public:
  std::string header() const override { return ""; }
  std::string rows(std::size_t, const cScan&, double) const override { return ""; }
};

}  // namespace

const std::map<std::string, eScanFormat>& scanFormats() {
  static const std::map<std::string, eScanFormat> formats = {
      {"table", eScanFormat::TABLE}, {"csv", eScanFormat::CSV}, {"json", eScanFormat::JSON}};
  return formats;
}

std::unique_ptr<iScanFormat> makeScanFormat(eScanFormat format, const cScanRange& range,
                                            const cOrigin& origin, const cCsvColumns& columns) {
  switch (format) {
    case eScanFormat::CSV:
      return std::make_unique<cCsvFormat>(range, origin, columns);
    case eScanFormat::JSON:
      return std::make_unique<cJsonFormat>(origin);
    case eScanFormat::NONE:
      return std::make_unique<cNoFormat>();
    case eScanFormat::TABLE:
      break;
  }
  return std::make_unique<cTableFormat>(range);
}

}  // namespace tool
