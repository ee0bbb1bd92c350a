#pragma once

// The state of this machine, and what each export would give on it now. Nothing is changed to find
// out: no file is made or written, no line logged.

#include "app/machine/client.h"
#include "app/machine/policy_file.h"
#include "app/text/json.h"
#include "host/printer_kind.h"

namespace app {

using SigilSettingManagement::PrinterKind;

struct PrinterState {
  std::wstring name;
  std::wstring driver;
  PrinterKind kind;
};

/// The printers of the machine. Throws std::runtime_error, which tells why there is no list.
std::vector<PrinterState> ListPrinters();

struct SettingState {
  std::string state;    ///< For people.
  std::string place;    ///< Where the file is; empty on Windows.
  std::string unsaved;  ///< Why nothing would be saved; empty when all is well.
};

SettingState ExamineSettingFile();

struct RefusedPlace {
  std::filesystem::path path;
  std::string why;  ///< "is a link", "belongs to another account", ...
};

struct MachineState {
  std::string machine;
  DeliveryFolder delivery;

  KeyState key;            ///< If none comes of it, no policy file is opened.
  std::string policyFile;  ///< The state of the policy file.
  std::string checksum;    ///< The SHA-256 of its text; empty when no text comes of it.
  /// The scope that set goes by; nothing when no policy is readable.
  std::optional<int> scope;
  bool hasSwitchingPolicy = false;  ///< The scope is that of policy 1, which is there.

  FunctionSwitch functionSwitch;

  std::string user;
  UserFile userFile;
  std::string unstoredName;  ///< Why a full name that is found would not be stored; or empty.

  /// The lines of machine.ini that are not read as they stand, each as `line` (from 1 on), `name`
  /// (of the entry, or "[...]" of the section) and `reason`.
  Json unread = Json::array();

  /// Nothing when the spooler has no list, and why.
  std::optional<std::vector<PrinterState>> printers;
  std::string noPrinters;

  std::string library;    ///< Empty when it can be loaded, else what is wrong.
  std::string component;  ///< Empty when it is found and has its entry, else what is wrong.
  SettingState settingFile;
  std::string mutex;    ///< Empty when the passes can have their mutex, else what is wrong.
  std::string log;      ///< The state of the log, and where it is.
  std::string logFile;  ///< A path of the host.
  DWORD pipeError = 0;  ///< 0 when somebody serves the pipe.

  std::vector<RefusedPlace> refused;
};

MachineState Examine();

struct Forecast {
  std::string command;  ///< The command of this program that calls the export.
  std::string result;
  std::string reason;
  bool isGood;  ///< The export would do its work, and its work would be saved.
};

/// Returns a forecast for each export.
std::vector<Forecast> Foresee(const MachineState& state);

/// Returns why the command gives this result on this machine; empty where the state does not tell.
std::string WhyForeseen(const std::string& command, int result);

/// The part of Examine that each home has its own way for: the machine's user and printers, the
/// setting file, log and pipe.
void ExamineMachine(MachineState& state);

/// A sentence that tells how many lines of machine.ini are not read as they stand; empty when all
/// are.
std::string WhatIsUnread();

/// Returns why the passes cannot have their mutex; empty when they can.
std::string WhyNoMutex();
/// Returns why lines of the log get lost here: "it is a link", "the disk is full", ...; empty when
/// none do.
std::string WhyLogLost();

/// Returns the full name of the machine's user that became `stored`, in UTF-8, in a user
/// information file of the ANSI code page; empty where none of the accounts' names lost a letter.
/// On Windows always empty, because the doctor names such a file.
std::string NameBefore(const std::string& stored);

/// Returns why a user file at this path of the host would not be written; empty when it would.
std::string WhyUnstored(const std::filesystem::path& userFile);

/// Returns the refused ones of the files that the library, its component and its log open by name,
/// and of the folders on the way.
std::vector<RefusedPlace> RefusedPlaces();

/// "is a link", "lies in EMS, which is a link", ...; empty when the machine opens the file, or
/// would make it.
std::string WhyRefused(const std::filesystem::path& file);

}  // namespace app
