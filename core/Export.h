#pragma once

/// Marks what the shared library exports; everything else stays inside it.
#define VELMO_API __attribute__((visibility("default")))
