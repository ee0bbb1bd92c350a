// A host in C: puts the printers that nobody monitors on the exclude list, and has the component
// call its print-content log callback.
//
// Exit status 0 when both are done.

#include <sigil/sigil_setting.h>
#include <stdio.h>

int main(void) {
  int result = SigilSettingUpdateExcludePrinter();
  if (result == SIGIL_SETTING_DONE) result = SigilSettingSetUseContentLog(true);
  printf("host in C: %d\n", result);
  if (result == SIGIL_SETTING_FAILED)
    fprintf(stderr, "The log tells why. Does SigilUtil_x86.dll lie beside this program?\n");
  return result == SIGIL_SETTING_DONE ? 0 : 1;
}
