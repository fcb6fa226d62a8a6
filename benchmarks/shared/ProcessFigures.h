// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef PROCESSFIGURES_H
#define PROCESSFIGURES_H

/// What the operating system says of this process.
namespace ProcessFigures {

/// The memory that is in use, in bytes, after what is free was given back.
double residentBytes();

/// The processor time of all threads so far, in seconds.
double processorSeconds();

/// The processor time of all child processes that have ended, in seconds.
double childProcessorSeconds();

} // namespace ProcessFigures

#endif
