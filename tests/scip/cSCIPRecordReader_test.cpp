// What a record is made of, byte by byte. Nothing of a port matters here: a string stream ends
// where a port's read would time out.
#include "tarvolink/scip/cSCIPRecordReader.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/cCaseName.h"

namespace {

constexpr int OK = 0;
constexpr int NO_ECHO = 0x1;
constexpr int NO_STATUS = 0x2;
constexpr int NO_END = 0x4;

const boost::posix_time::ptime EPOCH(boost::gregorian::date(1970, 1, 1));

struct cCase {
  const char* name;
  std::string input;
  int error;
  std::string echo;
  std::string status;
  std::string body;
  std::string rest;  // what the next read finds
};

class RecordReader : public testing::TestWithParam<cCase> {};

TEST_P(RecordReader, reads) {
  const cCase& expected = GetParam();
  std::istringstream stream(expected.input);
  cSCIPRecord record;
  record.error = 99;
  record.command = record.echo = record.status = record.body = "earlier";
  EXPECT_EQ(cSCIPRecordReader(stream).read(record), expected.error == OK);
  EXPECT_EQ(record.error, expected.error);
  EXPECT_EQ(record.echo, expected.echo);
  EXPECT_EQ(record.status, expected.status);
  EXPECT_EQ(record.body, expected.body);
  EXPECT_EQ(record.command, "earlier");
  EXPECT_EQ(record.time == EPOCH, expected.echo.empty()) << "taken with the echo";
  ASSERT_TRUE(stream.good()) << "the next read starts afresh";
  std::string rest;
  std::getline(stream, rest, '\x1F');
  EXPECT_EQ(rest, expected.rest);
}

INSTANTIATE_TEST_SUITE_P(
    Shape, RecordReader,
    testing::Values(
        cCase{"whole", "\n\nVV\n0\nline1\nline2\n\nnext", OK, "VV", "0", "line1\nline2\n", "next"},
        cCase{"noBody", "VV\n00P\n\n\n", OK, "VV", "00P", "", "\n"},
        cCase{"emptyStatus", "VV\n\n\n", OK, "VV", "", "", ""},
        cCase{"emptyStatusThenBody", "VV\n\nb\n\n", OK, "VV", "", "b\n", ""},
        cCase{"nothing", "", NO_ECHO, "", "", "", ""},
        cCase{"emptyLinesOnly", "\n\n\n", NO_ECHO, "", "", "", ""},
        cCase{"unfinishedEcho", "V", NO_STATUS, "V", "", "", ""},
        cCase{"noStatus", "VV\n", NO_STATUS, "VV", "", "", ""},
        cCase{"unfinishedStatus", "VV\n0", NO_END, "VV", "0", "", ""},
        cCase{"noEnd", "VV\n0\n", NO_END, "VV", "0", "", ""},
        cCase{"bodyWithoutEnd", "VV\n0\na\nb\n", NO_END, "VV", "0", "a\nb\n", ""},
        cCase{"unfinishedBodyLine", "VV\n0\na\nb", NO_END, "VV", "0", "a\nb\n", ""},
        cCase{"carriageReturns", "VV\r\n0\r\na\r\n\r\n\n", OK, "VV\r", "0\r", "a\r\n\r\n", ""},
        cCase{"leadingCarriageReturn", "\r\nVV\n\n", OK, "\r", "VV", "", ""},
        cCase{"nulBytes", std::string("V\0\n\0\nx\0y\n\n", 10), OK, std::string("V\0", 2),
              std::string("\0", 1), std::string("x\0y\n", 4), ""},
        cCase{"highBytes", "\xFF\x80\n\xFF\n\xFE\n\n", OK, "\xFF\x80", "\xFF", "\xFE\n", ""}),
    cCaseName());

const std::string LONGEST(4096, 'x');
const std::string TOO_LONG(4097, 'x');

/// Lines of 1 KiB, and a last one that fills up to so many characters.
std::string makeBody(std::size_t size) {
  std::string body;
  while (size - body.size() > 1024) body += std::string(1023, 'k') + "\n";
  return body + std::string(size - body.size() - 1, 'k') + "\n";
}

std::string emptyLines(std::size_t count) { return std::string(count, '\n'); }

// 65536 characters are a record, the closing line feed counted; one more is not.
const std::string LARGEST = makeBody(65531);
const std::string TOO_LARGE = makeBody(65532);

INSTANTIATE_TEST_SUITE_P(
    Limits, RecordReader,
    testing::Values(
        cCase{"longestEcho", LONGEST + "\n0\n\n", OK, LONGEST, "0", "", ""},
        cCase{"tooLongEcho", TOO_LONG + "\n0\n\n", NO_ECHO, "", "", "", "x\n0\n\n"},
        cCase{"longestStatus", "V\n" + LONGEST + "\n\n", OK, "V", LONGEST, "", ""},
        cCase{"tooLongStatus", "V\n" + TOO_LONG + "\n\n", NO_STATUS, "V", "", "", "x\n\n"},
        cCase{"longestBodyLine", "V\n0\n" + LONGEST + "\n\n", OK, "V", "0", LONGEST + "\n", ""},
        cCase{"tooLongBodyLine", "V\n0\nb\n" + TOO_LONG + "\n\n", NO_END, "V", "0", "b\n", "x\n\n"},
        cCase{"longestUnfinishedEcho", LONGEST, NO_STATUS, LONGEST, "", "", ""},
        cCase{"largestRecord", "V\n0\n" + LARGEST + "\n", OK, "V", "0", LARGEST, ""},
        cCase{"tooLarge", "V\n0\n" + TOO_LARGE + "\nq", NO_END, "V", "0", TOO_LARGE, "q"},
        cCase{"mostEmptyLines", emptyLines(65531) + "V\n0\n\n", OK, "V", "0", "", ""},
        cCase{"tooManyEmpty", emptyLines(65537) + "V\n\n", NO_ECHO, "", "", "", "V\n\n"},
        cCase{"statusBeyond", emptyLines(65534) + "V\n0\n\n", NO_STATUS, "V", "", "", "\n"}),
    cCaseName());

}  // namespace
