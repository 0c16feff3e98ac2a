#pragma once

/// @file
/// What the library shows.

/// Marks what the shared library exports; everything else is hidden.
#define TARVOLINK_API __attribute__((visibility("default")))
