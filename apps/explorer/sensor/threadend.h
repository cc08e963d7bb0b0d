// SPDX-License-Identifier: MIT
#pragma once

class QThread;

namespace Explorer {

/// Waits until \a thread, which was told to end, has ended, and deletes it.
///
/// A disk or a sensor may hang. A thread that is still busy after \a longestMs milliseconds is left alone, and deletes
/// itself when it ends: deleting a running QThread would terminate the program.
void finishThread(QThread *thread, unsigned long longestMs = 5000);

} // namespace Explorer
