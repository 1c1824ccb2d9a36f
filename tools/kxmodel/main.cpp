// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "Files.h"
#include "Manual.h"
#include "Report.h"
#include "System.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <functional>
#include <iostream>

namespace {

using namespace kxmodel;

constexpr char description[] = "Shows, checks, compares and changes model documents, in text or XML.";
constexpr char exitStatus[] =
    "Exit status: 0 good; 1 read with warnings (check only), different (diff only); 2 it could\n"
    "not be read or written, or the call was wrong. Messages go to standard error.";
constexpr char pathHelp[] = "Names an attribute: children or fields and the attribute itself, such as\n"
                            "/Fiji/label. /A[2]/x goes through the second A. A backslash stands before a\n"
                            "\"/\", \"[\", \"=\" or backslash that belongs to a name";

constexpr char diffNotes[] =
    "Each line has the path, the kind of the difference, the type, and both values as documents have\n"
    "them. Members are matched by name (children by UUID first), whatever their order. \"Write\"\n"
    "entries are not compared.\n"
    "Exit status: 0 equal, 1 different, 2 trouble.\n"
    "Example: kxmodel diff old.model new.model --approx --ignore UUID";
constexpr char mergeNotes[] =
    "Members are matched as by diff. What the source has is taken over, what only the target has stays.\n"
    "What is of another class, or differs and is of an unknown class, is replaced whole.\n"
    "An attribute keeps its type and its \"Write\" entry. What was done is counted on standard error.\n"
    "Example: kxmodel merge mine.model theirs.model -o merged.model";
constexpr char saveNotes[] =
    "Each attribute is a value, each container a key; child objects are in a key \"~\", the second of equal\n"
    "names as A[2]. A value is left out, and what the key has stays, when the text that the registry gets "
    "is\n"
    "not read back as the same value; each is listed with the reason. They are counted on standard error.\n"
    "Example: kxmodel registry save world.model --key 'HKCU\\Software\\World' --hive world.reg";
constexpr char loadNotes[] =
    "An attribute keeps its value when the registry has none for it, or one that is not a value of its\n"
    "type or no valid name, which is listed. The document is written in the rendering that it was read in.\n"
    "Example: kxmodel registry load world.model --key 'HKCU\\Software\\World' --hive world.reg -o out.model";

/// The verbs of the command line. Parsing chooses one; it runs afterwards.
class CommandLine {
public:
    CommandLine() {
        app_.footer(exitStatus);
        app_.set_version_flag("--version", KXMODEL_VERSION);
        app_.require_subcommand(1);
        // A path may begin with a slash on every system.
        app_.allow_windows_style_options(false);
        addShow();
        addConvert();
        addCheck();
        addDiff();
        addMerge();
        addExport();
        addGet();
        addSet();
        addGraph();
        addRegistry();
    }

    Status run(std::vector<std::string> const& arguments) {
        // For the build, which installs what it gets.
        if (arguments.size() == 2 && arguments[0] == "--manual")
            if (auto const text = manualText(app_, arguments[1])) {
                writeAll("-", *text);
                return Status::Good;
            }
        auto const isMeant = [&](CLI::App const* verb) { return verb->get_name() == arguments[0]; };
        // The parser would only say that there is no verb.
        if (!arguments.empty() && !arguments[0].starts_with('-') && app_.get_subcommands(isMeant).empty()) {
            printMessage("kxmodel", "A subcommand is required, and \"" + onOneLine(arguments[0]) +
                                        "\" is none; --help lists them");
            return Status::Failed;
        }
        try {
            // The parser takes them from the end.
            app_.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
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
        verb->footer("Example: kxmodel show world.model --depth 1");
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
        verb->footer("Example: kxmodel convert world.model world.xml --to xml");
        verb->callback([this] { command_ = [this] { return convert(convert_); }; });
    }

    void addCheck() {
        CLI::App* const verb = app_.add_subcommand("check", "Read documents and report warnings and errors");
        verb->add_option("FILE", files_, "The documents; - is standard input")->required();
        verb->footer("Example: kxmodel check world.model world.xml");
        verb->callback([this] { command_ = [this] { return check(files_); }; });
    }

    void addDiff() {
        CLI::App* const verb = app_.add_subcommand("diff", "List the differences of two documents");
        verb->footer(diffNotes);
        verb->add_option("A", diff_.first, "The first document; - is standard input")->required();
        verb->add_option("B", diff_.second, "The second document; - is standard input")->required();
        verb->add_flag("--approx", diff_.compare.isApproximate,
                       "Floating-point values that differ by next to nothing are equal");
        auto const chooseSide = [this](std::string const& side) {
            diff_.compare.countsOnlyFirst = side == "first" || side == "both";
            diff_.compare.countsOnlySecond = side == "second" || side == "both";
        };
        verb->add_option_function<std::string>("--only-in", chooseSide,
                                               "Count what is only in: first, second, both (default) or none")
            ->type_name("SIDE")
            ->check(CLI::IsMember({"first", "second", "both", "none"}));
        verb->add_option("--categories", diff_.compare.categories,
                         "Only attributes whose category shares a bit (64 when they are not declared)")
            ->type_name("MASK");
        verb->add_option("--ignore", diff_.compare.ignored,
                         "Leave out attributes, fields and children of this name; may be repeated")
            ->type_name("NAME")
            ->allow_extra_args(false);
        verb->add_flag("--links", diff_.compare.comparesLinks, "Compare observer links too");
        verb->add_flag("--quiet", diff_.isQuiet, "Print nothing, the exit status tells");
        verb->add_flag("--full", diff_.isFull,
                       "Do not cut values of more than 72 characters (JSON never does)");
        auto const chooseFormat = [this](std::string const& format) { diff_.isJson = format == "json"; };
        verb->add_option_function<std::string>("--format", chooseFormat, "The output: text (default) or json")
            ->type_name("FORMAT")
            ->check(CLI::IsMember({"text", "json"}));
        verb->callback([this] { command_ = [this] { return diff(diff_); }; });
    }

    void addMerge() {
        CLI::App* const verb = app_.add_subcommand("merge", "Merge a document into another one");
        verb->footer(mergeNotes);
        verb->add_option("TARGET", merge_.target, "The document that is changed; - is standard input")
            ->required();
        verb->add_option("SOURCE", merge_.source, "The document that is merged into it; - is standard input")
            ->required();
        verb->add_option("-o", merge_.out, "The file to write; - is standard output")->type_name("OUT");
        verb->add_flag("--delete", merge_.deletesSurplus, "Remove what only the target has");
        verb->add_flag("--dry-run", merge_.isDryRun, "Count only, write nothing");
        verb->callback([this] {
            if (!merge_.out && !merge_.isDryRun)
                throw CLI::RequiredError("-o (or --dry-run)");
            command_ = [this] { return merge(merge_); };
        });
    }

    void addExport() {
        CLI::App* const verb =
            app_.add_subcommand("export", "Write a document as plain XML for other programs");
        verb->add_option("IN", export_.in, "The document; - is standard input")->required();
        verb->add_option("OUT", export_.out, "The file to write; - is standard output")->required();
        verb->add_flag("--children", export_.hasChildren,
                       "Write child objects too, nested in an element \"children\" of their parent");
        verb->footer("Example: kxmodel export world.model world.xml --children");
        verb->callback([this] { command_ = [this] { return exportXml(export_); }; });
    }

    void addGet() {
        CLI::App* const verb = app_.add_subcommand("get", "Print the value of an attribute");
        verb->add_option("FILE", get_.file, "The document; - is standard input")->required();
        verb->add_option("PATH", get_.path, pathHelp)->required();
        verb->footer("Example: kxmodel get world.model /Fiji/label");
        verb->callback([this] { command_ = [this] { return get(get_); }; });
    }

    void addSet() {
        CLI::App* const verb = app_.add_subcommand("set", "Change attributes of a document");
        verb->add_option("FILE", set_.file, "The document; - is standard input")->required();
        verb->add_option("PATH=VALUE", set_.assignments, pathHelp)->required();
        verb->add_option("-o", set_.out, "The file to write instead of FILE; - is standard output")
            ->type_name("OUT");
        verb->footer("Values have the form that get prints. All of them are set, or nothing is written.\n"
                     "Example: kxmodel set world.model /Fiji/label=Viti -o changed.model");
        verb->callback([this] { command_ = [this] { return set(set_); }; });
    }

    void addGraph() {
        CLI::App* const verb = app_.add_subcommand("graph", "Draw the tree and its observer links");
        verb->add_option("FILE", graph_.file, "The document; - is standard input")->required();
        verb->add_option("-o", graph_.out,
                         "The file to write: .dot for a text in the dot language (otherwise on standard\n"
                         "output), .svg for a picture, which needs Graphviz")
            ->type_name("OUT");
        verb->footer("No more than the " + std::to_string(maxGraphNodes) +
                     " containers nearest to the root are drawn.\n"
                     "Example: kxmodel graph world.model -o world.svg");
        verb->callback([this] { command_ = [this] { return graph(graph_); }; });
    }

    void addRegistry() {
        CLI::App* const group =
            app_.add_subcommand("registry", "Keep the values of a document in the registry");
        group->require_subcommand(1);
        group->footer("Example: kxmodel registry save world.model --key HKCU\\Software\\World");
        CLI::App* const save =
            addRegistryVerb(*group, "save", "Save the values of a document to the registry", saveToRegistry);
        CLI::App* const load = addRegistryVerb(
            *group, "load", "Take over the values that the registry has for a document", loadFromRegistry);
        CLI::App* const list =
            addRegistryVerb(*group, "list", "List the values of a key and those below it", listRegistry);
        for (CLI::App* const verb : {save, load}) {
            verb->add_option("FILE", registry_.file, "The document; - is standard input")->required();
            verb->add_flag("--strict", registry_.isStrict, "Write nothing when a value would be left out");
        }
        load->add_option("-o", registry_.out, "The file to write; - is standard output")
            ->required()
            ->type_name("OUT");
        save->footer(saveNotes);
        load->footer(loadNotes);
        list->footer("Example: kxmodel registry list --key 'HKCU\\Software\\World' --hive world.reg");
    }

    CLI::App* addRegistryVerb(CLI::App& group, std::string const& name, std::string const& what,
                              Status (*act)(RegistryOptions const&)) {
        CLI::App* const verb = group.add_subcommand(name, what);
        verb->add_option("--key", registry_.key, "The key, such as HKCU\\Software\\World")
            ->required()
            ->type_name("KEY");
        verb->add_option("--hive", registry_.hive,
                         "The file that keeps the registry, a text of registry editors (version 5);\n"
                         "needed where the system has no registry, and only there")
            ->type_name("HIVE");
        verb->callback([this, act] { command_ = [this, act] { return act(registry_); }; });
        return verb;
    }

    CLI::App app_{description, "kxmodel"};
    ShowOptions show_;
    ConvertOptions convert_;
    std::vector<std::string> files_;
    DiffOptions diff_;
    MergeOptions merge_;
    ExportOptions export_;
    GetOptions get_;
    SetOptions set_;
    GraphOptions graph_;
    RegistryOptions registry_;
    std::function<Status()> command_;
};

} // namespace

int main(int argc, char** argv) {
    StandardStreams const streams;
    try {
        return static_cast<int>(CommandLine().run(argumentsOf(argc, argv)));
    } catch (FileError const& error) {
        printMessage(error.file(), error.what());
    } catch (std::exception const& error) {
        printMessage("kxmodel", error.what());
    }
    return static_cast<int>(Status::Failed);
}
