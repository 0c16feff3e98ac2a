#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "bench/cDescriptor.h"

/// Opens a tty as a program without the library would: raw, blocking reads. Throws
/// std::system_error.
cDescriptor openRaw(const std::string& path);

/// Waits for input and reads at most `size` bytes (poll(2), read(2)); returns how many. Throws
/// std::runtime_error when nothing arrives within iReader::TIMEOUT.
std::size_t pollAndRead(int fd, char* buffer, std::size_t size);

/// Writes the command that starts the endless scan.
void writeScanCommand(int fd);

/// Decodes a scan's record and throws std::runtime_error unless it has all its readings.
void decodeScan(const char* record, std::size_t size, std::vector<int>& distances);
