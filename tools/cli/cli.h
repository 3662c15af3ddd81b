// The command line of the quorvel program: the options every subcommand
// shares, and how a subcommand family registers itself.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

// Where the camera is and how to log in; every option also reads an
// environment variable.
struct ConnectionOptions {
  std::string host = "127.0.0.1";  // --host, QUORVEL_HOST
  int port = 0;                    // --port, QUORVEL_PORT (control port)
  std::string user = "admin";      // --user, QUORVEL_USER
  std::string password = "admin";  // --password, QUORVEL_PASSWORD
  double timeout = 10;             // --timeout: seconds to wait for a camera
  int TimeoutMs() const { return static_cast<int>(timeout * 1000); }
};

// The library's debug log switches.
struct LogOptions {
  bool console = false;  // --log: log lines on the console
  std::string dir;       // --log-dir DIR: log files in DIR
  bool udp = false;      // --log-udp: log lines to the UDP monitor as well
};

// A subcommand's work; runs once the whole command line is read. Returns the
// exit status: 0 success, 1 failure (already reported on standard error).
using Runner = std::function<int()>;

struct Cli {
  CLI::App app{"quorvel: drive IP cameras through libquorvel", "quorvel"};
  ConnectionOptions connection;
  LogOptions log;
  Runner runner;

  // A subcommand of parent that, when chosen, runs run.
  CLI::App* Add(CLI::App* parent, const std::string& name, const std::string& description,
                Runner run);
};

// Subcommand families, one file each.
void AddConvertCommand(Cli& cli);
void AddConfigCommands(Cli& cli);
void AddDiscoverCommand(Cli& cli);
void AddFileCommands(Cli& cli);
void AddLiveCommand(Cli& cli);
void AddPtzCommands(Cli& cli);
void AddReplayCommands(Cli& cli);
void AddSnapshotCommand(Cli& cli);
void AddStatusCommand(Cli& cli);
void AddSystemCommands(Cli& cli);
void AddTalkCommand(Cli& cli);
void AddTimeCommands(Cli& cli);
