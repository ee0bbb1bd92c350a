#pragma once

#include <memory>

#include "component/reference.h"
#include "component/sigil_interfaces.h"

struct ComponentRecord;

/// The component handle: it loads the Settings component from the host executable's folder, gets
/// the root interface and gives both back. One lives on the stack of the operation that needs it,
/// for one pass, and is never kept.
///
/// It takes no lock by itself: whoever changes settings holds the system-wide mutex
/// (setting_mutex.h) around the handle's life and the component's lock around the changes. Unless
/// an operation says otherwise, an exception of the component reaches its caller.
class OperationSigilSettings {
 public:
  /// Loads the component. Never fails outwardly: CreateInstance tells.
  OperationSigilSettings();

  /// Releases the root interface if it is still held, then unloads the component.
  ~OperationSigilSettings() noexcept(false) = default;

  OperationSigilSettings(const OperationSigilSettings&) = delete;
  OperationSigilSettings& operator=(const OperationSigilSettings&) = delete;

  /// Keeps the component loaded after the handle is destroyed. An exception whose class lies in the
  /// component needs the component's code until it is destroyed. A caller that catches such
  /// exceptions takes this before the first call and drops it after the catch clause.
  std::shared_ptr<const ComponentRecord> Component() const { return m_pComponent; }

  /// Gets the root interface. All operations below need it, but for those that say otherwise.
  bool CreateInstance();

  /// Releases the root interface, if there is one.
  void ReleaseInstance();

  /// The component's own lock, inside the system-wide mutex. Without a root interface nothing
  /// happens.
  void SigilLock();
  void SigilUnLock();

  /// Commits and saves the setting file. False without a root interface or when the save failed.
  bool SaveCfg();

  /// Opens the record of a printer, or of the default entry "*". On true `*record` is the caller's
  /// to release.
  bool GetPrinterSettingsOpe(const wchar_t* printer, Sigil::PrinterSettings** record);

  /// Sets (1) or clears (0) the content-log switch and commits. SaveCfg makes it lasting.
  void SetUseContentLog(BYTE flag);

  /// The setting file's folder into `folder`, of kFolderCapacity characters. Gives its length with
  /// the terminator. 0: the component gave none, or one that does not fit, which is never cut.
  static constexpr std::uint32_t kFolderCapacity = 256;
  std::uint32_t GetSettingFileDirPath(wchar_t* folder);

  // One printer's record, or that of "*". Each saves its record at once; true when it was saved.
  bool EnableWatermark(const wchar_t* printer);
  bool DisableWatermark(const wchar_t* printer);
  /// Deletes the record's watermarks. One whose GUID cannot be read is left in place.
  bool ClearWatermark(const wchar_t* printer);

  /// Empties the exclude list and the component's second one, which this library never fills, and
  /// saves. True when they were saved.
  bool AllDeleteExclude();

  /// Adds the printer to the exclude list, which SaveCfg makes lasting. With `exclude` false it
  /// only logs that the printer is not on it.
  void AddExcludePrinter(const wchar_t* printer, bool exclude);

  /// Deletes the individual settings of printers and drivers from the setting file. False only
  /// after an exception.
  bool AllDeletePrinterSetting();

 private:
  // In this order: the root interface is released before the component is unloaded.
  std::shared_ptr<ComponentRecord> m_pComponent;
  Sigil::CReference<Sigil::Settings> m_pSettings;
};
