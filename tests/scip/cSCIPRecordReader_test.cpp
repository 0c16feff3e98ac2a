// What a record is made of, byte by byte. Nothing of a port matters here: a string stream ends
// where a port's read would time out.
#include "tarvolink/scip/cSCIPRecordReader.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

constexpr int OK = 0;
constexpr int NO_ECHO = 0x1;
constexpr int NO_STATUS = 0x2;
constexpr int NO_END = 0x4;

struct cRow {
  std::string input;
  int error;
  std::string echo, status, body;
  std::string rest;  // what the next read finds
};

void expectRead(const cRow& row) {
  SCOPED_TRACE(row.input.substr(0, 30) + "... of " + std::to_string(row.input.size()));
  std::istringstream stream(row.input);
  cSCIPRecord record;
  record.error = 0x8;
  record.command = record.echo = record.status = record.body = "earlier";
  const auto unset = record.time;
  EXPECT_EQ(cSCIPRecordReader(stream).read(record), row.error == OK);
  EXPECT_EQ(record.error, row.error);
  EXPECT_EQ(record.echo, row.echo);
  EXPECT_EQ(record.status, row.status);
  EXPECT_EQ(record.body, row.body);
  EXPECT_EQ(record.command, "earlier");
  EXPECT_EQ(record.time == unset, row.echo.empty()) << "taken with the echo";
  ASSERT_TRUE(stream.good()) << "the next read starts afresh";
  std::string rest;
  std::getline(stream, rest, '\x1F');
  EXPECT_EQ(rest, row.rest);
}

// Catches: bytes lost, added or put into another part of the record, also in the next one.
TEST(RecordReader, ReadsEachShape) {
  for (const cRow& row :
       {cRow{"\n\nVV\n0\nline1\nline2\n\nnext", OK, "VV", "0", "line1\nline2\n", "next"},
        cRow{"VV\n00P\n\n\n", OK, "VV", "00P", "", "\n"},
        cRow{"VV\n\nb\n\n", OK, "VV", "", "b\n", ""}, cRow{"\n\n\n", NO_ECHO, "", "", "", ""},
        cRow{"VV\n0\na\nb\n", NO_END, "VV", "0", "a\nb\n", ""},
        cRow{"VV\n0\na\nb", NO_END, "VV", "0", "a\nb\n", ""},
        cRow{"VV\r\n0\r\na\r\n\r\n\n", OK, "VV\r", "0\r", "a\r\n\r\n", ""},
        cRow{std::string("V\0\n\0\nx\0y\n\n", 10), OK, std::string("V\0", 2), std::string("\0", 1),
             std::string("x\0y\n", 4), ""},
        cRow{"\xFF\x80\n\xFF\n\xFE\n\n", OK, "\xFF\x80", "\xFF", "\xFE\n", ""}}) {
    expectRead(row);
  }
}

// Catches: memory that grows with a line or record without end, and one more or less than the
// longest allowed: 4096 characters a line, 65536 a record with its closing line feed.
TEST(RecordReader, EndsAtItsLimits) {
  const std::string line(4096, 'x');
  const std::string longer = line + "x";
  const auto emptyLines = [](std::size_t count) { return std::string(count, '\n'); };
  std::string most;  // 65531 characters
  while (most.size() < 64000) most += std::string(1023, 'k') + "\n";
  most += std::string(65530 - most.size(), 'k') + "\n";
  const std::string more = "k" + most;
  for (const cRow& row : {cRow{line + "\n0\n\n", OK, line, "0", "", ""},
                          cRow{longer + "\n0\n\n", NO_ECHO, "", "", "", "x\n0\n\n"},
                          cRow{"V\n" + line + "\n\n", OK, "V", line, "", ""},
                          cRow{"V\n" + longer + "\n\n", NO_STATUS, "V", "", "", "x\n\n"},
                          cRow{"V\n0\n" + line + "\n\n", OK, "V", "0", line + "\n", ""},
                          cRow{"V\n0\nb\n" + longer + "\n\n", NO_END, "V", "0", "b\n", "x\n\n"},
                          cRow{"V\n0\n" + most + "\n", OK, "V", "0", most, ""},
                          cRow{"V\n0\n" + more + "\nq", NO_END, "V", "0", more, "q"},
                          cRow{emptyLines(65531) + "V\n0\n\n", OK, "V", "0", "", ""},
                          cRow{emptyLines(65537) + "V\n\n", NO_ECHO, "", "", "", "V\n\n"}}) {
    expectRead(row);
  }
}

}  // namespace
