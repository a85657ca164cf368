#pragma once

/// Marks what crosses a library border. Every library is built with hidden visibility; types that are thrown, caught or
/// cast in another library carry this mark, so that their type information is one and the same everywhere.
#define VELNOR_API __attribute__((visibility("default")))
