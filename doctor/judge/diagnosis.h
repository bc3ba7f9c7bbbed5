// The whole examination.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "doctor/child/patience.h"
#include "doctor/examine/application_report.h"
#include "doctor/examine/environment_report.h"
#include "doctor/examine/machine/launcher_file.h"
#include "doctor/examine/machine/open_paths.h"
#include "doctor/examine/other_roots.h"
#include "doctor/examine/runtime_report.h"
#include "doctor/examine/settings_report.h"
#include "doctor/examine/start_report.h"
#include "doctor/judge/verdict.h"
#include "doctor/judge/warning.h"

namespace doctor {

/// What is asked.
struct Question {
  std::string settings_path;        ///< The file that is read as the settings.
  std::optional<std::string> root;  ///< A root that takes the place of the one in the settings.
  bool probe = true;                ///< Whether libraries are loaded and a context is created.
  Patience patience = {};           ///< With each child process.
  InstallPlaces places = {};        ///< Where else a runtime is looked for when there is none.
  std::string launcher = {};        ///< The launcher's file; empty when it is not looked at.
};

struct Diagnosis {
  Verdict verdict;
  Warnings warnings;
  SettingsReport settings;
  std::optional<RuntimeReport> runtime;  ///< Empty when no root is known.
  std::vector<OtherRoot> other_roots;    ///< Empty where none was looked for.
  EnvironmentReport environment;
  std::optional<LauncherReport> launcher;  ///< Empty when it was not looked at.
  ApplicationReport application;
  std::optional<StartReport> start;  ///< Empty when there was no context to start the runtime for.
  std::vector<OpenPath> open_paths;  ///< What others may change of what a launch reads and loads.
  std::string closed_to_others;  ///< A path that a launch uses and that not every user may; empty when there is none.
};

/// Walks a launch's road and reports what is there. Changes nothing and runs nothing of the application. Throws
/// `std::system_error` when no child process can be had.
Diagnosis Diagnose(const Question& question);

}  // namespace doctor
