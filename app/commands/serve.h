#pragma once

namespace app {

/// Runs the control service in the foreground and prints each event with its time, until SIGINT or
/// SIGTERM.
void Serve();

}  // namespace app
