// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLENDOFAPPLICATION_H
#define VLENDOFAPPLICATION_H

#include <functional>

/**
 * What is to be done before QtSql closes its connections, as the application object goes: a thread
 * that still uses one would use freed memory.
 *
 * Internal to the host kit.
 */
namespace Vidlets::EndOfApplication {

/// Has @p action called once, on the thread that deletes the application object; @p owner stands
/// for it.
void add(const void* owner, const std::function<void()>& action);

/// Takes back what @p owner stands for.
void remove(const void* owner);

/// To be called after each use of QtSql, on any thread: that registers a routine of its own for the
/// end each time, and of those the last one is called first.
void comeFirst();

} // namespace Vidlets::EndOfApplication

#endif
