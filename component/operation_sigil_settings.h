#pragma once

#include <memory>

#include "component/reference.h"
#include "component/sigil_interfaces.h"

struct ComponentRecord;

/// The component handle: loads the Settings component from the host executable's folder, gets the
/// root interface and gives both back. A handle lives on the stack of an operation, for one pass.
///
/// It takes no lock. A caller that changes settings holds the system-wide mutex (setting_mutex.h)
/// from before CreateInstance until ReleaseInstance, and the component's lock around the changes.
/// Unless an operation says otherwise, an exception of the component reaches its caller.
class OperationSigilSettings {
 public:
  /// Loads the component. Throws nothing; after a failed load CreateInstance returns false.
  OperationSigilSettings();

  /// Releases the root interface if it is still held, then unloads the component.
  ~OperationSigilSettings() noexcept(false) = default;

  OperationSigilSettings(const OperationSigilSettings&) = delete;
  OperationSigilSettings& operator=(const OperationSigilSettings&) = delete;

  /// Returns an owner that keeps the component loaded after the handle is destroyed, because an
  /// exception whose class lies in the component needs its code. A caller that catches such
  /// exceptions takes the owner before the first call and drops it after the catch clause.
  std::shared_ptr<const ComponentRecord> Component() const { return m_pComponent; }

  /// Gets the root interface; false when there is none. The operations below need it unless they
  /// say otherwise.
  bool CreateInstance();

  /// Releases the root interface, if there is one.
  void ReleaseInstance();

  /// Take and give up the component's own lock, inside the system-wide mutex. They do nothing
  /// without a root interface.
  void SigilLock();
  void SigilUnLock();

  /// Commits and saves the setting file. Returns false without a root interface and after a failed
  /// save.
  bool SaveCfg();

  /// Opens the record of a printer, or of the default entry "*". On true `*record` is the caller's
  /// to release.
  bool GetPrinterSettingsOpe(const wchar_t* printer, Sigil::PrinterSettings** record);

  /// Sets (1) or clears (0) the content-log switch and commits. The caller saves by SaveCfg.
  void SetUseContentLog(BYTE flag);

  /// Writes the setting file's folder to `folder`, a buffer of kFolderCapacity characters. Returns
  /// its length with the terminator, or 0 when the component gave none or one that does not fit.
  static constexpr std::uint32_t kFolderCapacity = 256;
  std::uint32_t GetSettingFileDirPath(wchar_t* folder);

  // These change the record of one printer, or of "*". Each saves the record at once and returns
  // true if it was saved.
  bool EnableWatermark(const wchar_t* printer);
  bool DisableWatermark(const wchar_t* printer);
  /// Deletes the record's watermarks. A watermark whose GUID cannot be read stays.
  bool ClearWatermark(const wchar_t* printer);

  /// Empties the exclude list and the component's second list, which this library never fills, and
  /// saves. Returns true if they were saved.
  bool AllDeleteExclude();

  /// Adds the printer to the exclude list; the caller saves by SaveCfg. With `exclude` false it
  /// only logs that the printer is not excluded.
  void AddExcludePrinter(const wchar_t* printer, bool exclude);

  /// Deletes the individual settings of printers and drivers from the setting file. Returns false
  /// only after an exception.
  bool AllDeletePrinterSetting();

 private:
  // In this order: the root interface is released before the component is unloaded.
  std::shared_ptr<ComponentRecord> m_pComponent;
  Sigil::CReference<Sigil::Settings> m_pSettings;
};
