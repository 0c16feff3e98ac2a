#pragma once

/// Marks what the library exports; all else is hidden.
#define TARVOSCAN_API __attribute__((visibility("default")))
/// Keeps what is within an exported class from being exported.
#define TARVOSCAN_LOCAL __attribute__((visibility("hidden")))
