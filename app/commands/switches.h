#pragma once

// The commands that are one export each: they switch the watermarks, the exclude list and the
// content log. Each gives 0 when its work is done and saved, else 1.

namespace app {

int Set();
int Release();
int ReleaseForService();
int Exclude();
int SwitchContentLog(bool on);

}  // namespace app
