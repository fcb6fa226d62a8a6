// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef CLIPTHREADS_H
#define CLIPTHREADS_H

/// How often the threads of the clips that there are went to sleep by themselves so far.
int sleepsOfClipThreads();

#endif
