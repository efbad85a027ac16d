#pragma once

#include <QString>

#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <vector>

/// The command line's grammar: the commands with their options, arguments and help texts. Manual page and
/// completions are made from it, too. Main thread only.
class ArgumentParser {
public:
    ArgumentParser();
    ArgumentParser(const ArgumentParser&) = delete;
    ArgumentParser& operator=(const ArgumentParser&) = delete;

    /// The numbers of the setting ConversionPreset by their words.
    static const std::map<std::string, qint64>& styles();

    /// What --version prints.
    static QString version();

    /// Call it before the help is printed; no other start has to pay for it.
    void translateHelp();

    CLI::App app;

    /// The values that the parser fills in, in UTF-8.
    struct Values {
        std::vector<std::string> paths;
        std::vector<std::string> settings;
        std::string folder, output, style, watched, key, value;
        int audio = 0;
        bool json = false, quiet = false, keepDamaged = false, skipExisting = false, describe = false;
        int stallLimit = 0;  ///< In seconds; 0: none.
    };
    Values values;

    CLI::App* probe = nullptr;
    CLI::App* plan = nullptr;
    CLI::App* convert = nullptr;
    CLI::App* watch = nullptr;
    CLI::App* settings = nullptr;
    CLI::App* doctor = nullptr;
};
