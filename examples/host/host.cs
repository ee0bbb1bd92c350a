// A host in C#: puts the printers that nobody monitors on the exclude list. Built as a 32-bit program,
// which lies beside SigilSetting.dll, log4cxx.dll and SigilUtil_x86.dll: csc /platform:x86 host.cs
//
// Exit status 0 when it is done.

using System;
using System.ComponentModel;
using System.IO;
using System.Runtime.InteropServices;

static class Host {
  [DllImport("kernel32", CharSet = CharSet.Unicode, SetLastError = true)]
  static extern IntPtr LoadLibrary(string path);

  [DllImport("SigilSetting", CallingConvention = CallingConvention.Cdecl)]
  static extern int SigilSettingUpdateExcludePrinter();

  [STAThread]  // in a multithreaded apartment the calls that read a policy fail
  static int Main() {
    // By full path, the log first: by its name alone Windows would also take one of the current folder.
    foreach (string file in new[] {"log4cxx.dll", "SigilSetting.dll"})
      if (LoadLibrary(Path.Combine(AppDomain.CurrentDomain.BaseDirectory, file)) == IntPtr.Zero)
        throw new Win32Exception();
    int result = SigilSettingUpdateExcludePrinter();
    Console.WriteLine("host in C#: " + result);
    return result == 0 ? 0 : 1;
  }
}
