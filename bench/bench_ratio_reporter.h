// Runs the registered benchmarks and, after the usual table, prints for each group of runs named
// "<group>/ze", "<group>/avformat" and "<group>/memcpy" how our time compares with the other two.
#pragma once

int RunBenchmarksWithRatios(int argc, char** argv);
