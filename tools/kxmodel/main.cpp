// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "Files.h"
#include "Report.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <functional>
#include <iostream>

namespace {

using namespace kxmodel;

constexpr char description[] = "Shows, converts and checks model documents, in text or XML.";
constexpr char exitStatus[] =
    "Exit status: 0 good; 1 read with warnings (check only); 2 it could not be read or\n"
    "written, or the call was wrong. Messages go to standard error.";

/// The verbs of the command line. Parsing chooses one; it runs afterwards.
class CommandLine {
public:
    CommandLine() {
        app_.footer(exitStatus);
        app_.require_subcommand(1);
        addShow();
        addConvert();
        addCheck();
    }

    Status run(int argc, char** argv) {
        try {
            app_.parse(argc, argv);
        } catch (CLI::ParseError const& error) {
            // Help is asked for; everything else is a wrong call, whatever number the parser has for it.
            return app_.exit(error) == 0 ? Status::Good : Status::Failed;
        }
        return command_();
    }

private:
    void addShow() {
        CLI::App* const verb = app_.add_subcommand("show", "Show the tree of a document as text");
        verb->add_option("FILE", show_.file, "The document; - is standard input")->required();
        verb->add_option("--depth", show_.depth, "Levels below the root that are shown")->type_name("N");
        verb->add_flag("--no-values", show_.hidesValues, "Show types and names only");
        verb->add_flag("--links", show_.showsLinks, "Show observer links");
        verb->add_flag("--full", show_.isFull, "Do not cut long values");
        verb->callback([this] { command_ = [this] { return show(show_); }; });
    }

    void addConvert() {
        using Zorvan::AttributeContainer::ModelFormat;
        CLI::App* const verb = app_.add_subcommand("convert", "Write a document in a rendering");
        verb->add_option("IN", convert_.in, "The document; - is standard input")->required();
        verb->add_option("OUT", convert_.out, "The file to write; - is standard output")->required();
        auto const choose = [this](std::string const& to) {
            convert_.to = to == "xml" ? ModelFormat::XmlV2 : ModelFormat::Text;
        };
        verb->add_option_function<std::string>("--to", choose, "The rendering: text or xml")
            ->required()
            ->type_name("RENDERING")
            ->check(CLI::IsMember({"text", "xml"}));
        verb->add_flag("--lossy", convert_.isLossAccepted,
                       "Write what was read even when content was left out");
        verb->callback([this] { command_ = [this] { return convert(convert_); }; });
    }

    void addCheck() {
        CLI::App* const verb = app_.add_subcommand("check", "Read documents and report warnings and errors");
        verb->add_option("FILE", files_, "The documents; - is standard input")->required();
        verb->callback([this] { command_ = [this] { return check(files_); }; });
    }

    CLI::App app_{description, "kxmodel"};
    ShowOptions show_;
    ConvertOptions convert_;
    std::vector<std::string> files_;
    std::function<Status()> command_;
};

} // namespace

int main(int argc, char** argv) {
    try {
        return static_cast<int>(CommandLine().run(argc, argv));
    } catch (FileError const& error) {
        printMessage(error.file(), error.what());
    } catch (std::exception const& error) {
        printMessage("kxmodel", error.what());
    }
    return static_cast<int>(Status::Failed);
}
