#pragma once

// Marks what crosses a library boundary. Everything else in the libraries is hidden.
#define VIREO_API __attribute__((visibility("default")))
