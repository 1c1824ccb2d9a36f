// SPDX-License-Identifier: MIT
#include "Manual.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <vector>

namespace kxmodel {

namespace {

using Texts = std::vector<std::string>;

/// The texts, each behind a mark.
std::string joined(Texts const& texts, std::string_view mark) {
    std::string result;
    for (std::string const& text : texts)
        result.append(result.empty() ? "" : " ").append(mark) += text;
    return result;
}

std::string withoutLineBreaks(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

/// An option or a positional argument.
class Argument {
public:
    explicit Argument(CLI::Option const& option) : option_(option) {}

    bool isPositional() const { return option_.get_positional(); }
    bool isOptional() const { return !option_.get_required(); }
    bool isRepeated() const { return option_.get_items_expected_max() > 1; }
    bool takesValue() const { return option_.get_items_expected_max() > 0; }
    Texts const& shortNames() const { return option_.get_snames(); }
    Texts const& longNames() const { return option_.get_lnames(); }
    std::string name() const { return option_.get_name(true); }
    std::string description() const { return withoutLineBreaks(option_.get_description()); }

    /// "-o", "--to" and the like.
    Texts names() const {
        Texts names;
        for (std::string const& name : shortNames())
            names.push_back("-" + name);
        for (std::string const& name : longNames())
            names.push_back("--" + name);
        return names;
    }
    std::string valueName() const {
        std::string const type = option_.get_type_name();
        return type.substr(0, type.find(':'));
    }
    /// The values that there are; empty when any is allowed.
    Texts choices() const {
        std::string const type = option_.get_type_name();
        std::size_t const begin = type.find(":{"), end = type.rfind('}');
        if (begin == type.npos || end == type.npos)
            return {};
        return CLI::detail::split(type.substr(begin + 2, end - begin - 2), ',');
    }

private:
    CLI::Option const& option_;
};

std::vector<Argument> argumentsOf(CLI::App const& app, bool arePositional) {
    std::vector<Argument> arguments;
    for (CLI::Option const* option : app.get_options())
        if (option->get_positional() == arePositional)
            arguments.emplace_back(*option);
    return arguments;
}

std::vector<CLI::App const*> subcommandsOf(CLI::App const& app) {
    return app.get_subcommands([](CLI::App const*) { return true; });
}

/// The verbs, those of groups in the place of their group.
std::vector<CLI::App const*> verbsOf(CLI::App const& app) {
    std::vector<CLI::App const*> verbs;
    for (CLI::App const* command : subcommandsOf(app)) {
        auto const below = verbsOf(*command);
        verbs.insert(verbs.end(), below.begin(), below.end());
        if (below.empty())
            verbs.push_back(command);
    }
    return verbs;
}

std::vector<CLI::App const*> groupsOf(CLI::App const& app) {
    std::vector<CLI::App const*> groups = subcommandsOf(app);
    std::erase_if(groups, [](CLI::App const* command) { return subcommandsOf(*command).empty(); });
    return groups;
}

/// "show", or "registry save" for a verb of a group.
std::string nameOf(CLI::App const& verb) {
    CLI::App const* group = verb.get_parent();
    return group->get_parent() ? group->get_name() + " " + verb.get_name() : verb.get_name();
}

/// "--depth" and all other options of a verb.
std::string optionWords(CLI::App const& verb) {
    Texts words;
    for (Argument const& argument : argumentsOf(verb, false))
        for (std::string const& name : argument.names())
            words.push_back(name);
    return joined(words, "");
}

// --- manual page

/// A text of a manual page: its lines are filled, and nothing in it is taken for a request.
std::string roff(std::string_view text) {
    std::string result;
    for (char const c : text) {
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else
            result += c;
    }
    if (!result.empty() && (result[0] == '.' || result[0] == '\''))
        result.insert(0, "\\&");
    return result;
}

std::string synopsis(CLI::App const& verb) {
    std::string text = "\\fBkxmodel " + roff(nameOf(verb)) + "\\fR [\\fIOPTION\\fR]...";
    for (Argument const& argument : argumentsOf(verb, true)) {
        std::string const name = "\\fI" + roff(argument.name()) + "\\fR";
        text += argument.isOptional() ? " [" + name + "]" : " " + name;
        if (argument.isRepeated())
            text += "...";
    }
    return text + "\n";
}

std::string explained(Argument const& argument) {
    std::string text = ".TP\n";
    if (argument.isPositional())
        text += "\\fI" + roff(argument.name()) + "\\fR";
    for (std::string const& name : argument.names())
        text += (text.back() == '\n' ? "\\fB" : ", \\fB") + roff(name) + "\\fR";
    if (!argument.isPositional() && argument.takesValue())
        text += " \\fI" + roff(argument.valueName()) + "\\fR";
    return text + "\n" + roff(argument.description()) + "\n";
}

/// Lines that are indented, or begin with "Example: ", are examples and stand as they are.
std::string explainedFooter(std::string const& footer) {
    constexpr std::string_view example = "Example: ";
    std::string text;
    for (std::string const& line : CLI::detail::split(footer, '\n')) {
        if (line.starts_with(example))
            text += ".PP\nExample:\n.PP\n.RS\n.nf\n" + roff(line.substr(example.size())) + "\n.fi\n.RE\n";
        else if (line.starts_with(' '))
            text += ".PP\n.RS\n.nf\n" + roff(CLI::detail::trim_copy(line)) + "\n.fi\n.RE\n";
        else if (!line.empty())
            text += (text.empty() ? ".PP\n" : "") + roff(line) + "\n";
    }
    return text;
}

std::string manualPage(CLI::App const& app) {
    std::string text = ".TH KXMODEL 1 \"\" \"kxmodel " + app.version() +
                       "\" \"User Commands\"\n.SH NAME\nkxmodel \\- " +
                       roff(withoutLineBreaks(app.get_description())) + "\n.SH SYNOPSIS\n";
    for (CLI::App const* verb : verbsOf(app))
        text += (verb == verbsOf(app).front() ? "" : ".br\n") + synopsis(*verb);
    text += ".SH DESCRIPTION\n" + roff(withoutLineBreaks(app.get_description())) + "\n";
    for (CLI::App const* verb : verbsOf(app)) {
        text +=
            ".SS " + roff(nameOf(*verb)) + "\n" + roff(withoutLineBreaks(verb->get_description())) + ".\n";
        for (bool const arePositional : {true, false})
            for (Argument const& argument : argumentsOf(*verb, arePositional))
                text += explained(argument);
        text += explainedFooter(verb->get_footer());
    }
    // The footer begins with the title of its section.
    std::string const footer = app.get_footer();
    return text + ".SH EXIT STATUS\n" + roff(withoutLineBreaks(footer.substr(footer.find(' ', 5) + 1))) +
           "\n";
}

// --- completion

std::string verbWords(CLI::App const& app) {
    Texts words;
    for (CLI::App const* verb : subcommandsOf(app))
        words.push_back(verb->get_name());
    return joined(words, "");
}

/// Everything that is not completed here is a file.
std::string bashCompletion(CLI::App const& app) {
    auto const pattern = [](CLI::App const& verb) {
        std::string name = nameOf(verb);
        for (std::size_t at = 0; (at = name.find(' ', at)) != name.npos; at += 2)
            name.insert(at, 1, '\\');
        return name;
    };
    std::string values, options, groups;
    for (CLI::App const* group : groupsOf(app)) {
        groups += "    [[ $verb != " + group->get_name() +
                  " || $COMP_CWORD -le 2 ]] || verb+=\" ${COMP_WORDS[2]}\"\n";
        values += "        " + group->get_name() + ":*) words=\"" + verbWords(*group) + "\" ;;\n";
    }
    for (CLI::App const* verb : verbsOf(app)) {
        for (Argument const& argument : argumentsOf(*verb, false))
            if (Texts const choices = argument.choices(); !choices.empty())
                for (std::string const& name : argument.names())
                    values += "        " + pattern(*verb) + ":" + name + ") words=\"" + joined(choices, "") +
                              "\" ;;\n";
        options += "        " + pattern(*verb) + ":*) [[ $word == -* ]] && words=\"" + optionWords(*verb) +
                   "\" ;;\n";
    }
    return "# Completes calls of kxmodel in bash.\n"
           "_kxmodel() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words=\n"
           "    [[ $COMP_CWORD -gt 1 ]] || previous=\n"
           "    local verb=${COMP_WORDS[1]}\n" +
           groups +
           "    case $verb:$previous in\n"
           "        *:) words=\"" +
           verbWords(app) + "\" ;;\n" + values + options +
           "    esac\n"
           "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n"
           "}\n"
           "complete -o default -F _kxmodel kxmodel\n";
}

/// A text in the apostrophes of a shell.
std::string inApostrophes(std::string const& text, std::string_view apostrophe) {
    std::string result = "'";
    for (char const c : text)
        result += c == '\'' ? std::string(apostrophe) : std::string(1, c);
    return result + "'";
}

std::string fishCompletion(CLI::App const& app) {
    auto const quoted = [](std::string const& text) { return inApostrophes(text, "\\'"); };
    std::string text = "# Completes calls of kxmodel in fish.\n";
    for (CLI::App const* command : subcommandsOf(app))
        text += "complete -c kxmodel -n __fish_use_subcommand -f -a " + command->get_name() + " -d " +
                quoted(command->get_description()) + "\n";
    // A verb of a group is one only behind its group.
    auto const isSeen = [](CLI::App const& command) {
        return "__fish_seen_subcommand_from " + command.get_name();
    };
    for (CLI::App const* group : groupsOf(app))
        for (CLI::App const* verb : subcommandsOf(*group))
            text += "complete -c kxmodel -n '" + isSeen(*group) + "; and not __fish_seen_subcommand_from " +
                    verbWords(*group) + "' -f -a " + verb->get_name() + " -d " +
                    quoted(verb->get_description()) + "\n";
    for (CLI::App const* verb : verbsOf(app)) {
        std::string condition = isSeen(*verb);
        if (CLI::App const* group = verb->get_parent(); group != &app)
            condition.insert(0, isSeen(*group) + "; and ");
        for (Argument const& argument : argumentsOf(*verb, false)) {
            text += "complete -c kxmodel -n '" + condition + "'";
            for (std::string const& name : argument.shortNames())
                text += " -s " + name;
            for (std::string const& name : argument.longNames())
                text += " -l " + name;
            if (Texts const choices = argument.choices(); !choices.empty())
                text += " -x -a " + quoted(joined(choices, ""));
            else if (argument.takesValue())
                text += " -r";
            text += " -d " + quoted(argument.description()) + "\n";
        }
    }
    return text;
}

std::string zshCompletion(CLI::App const& app) {
    auto const quoted = [](std::string const& text) { return inApostrophes(text, "'\\''"); };
    // Colons and brackets divide what describes an argument.
    auto const plain = [](std::string const& text) {
        std::string result;
        for (char const c : text)
            result += std::string_view(":[]\\").find(c) != std::string_view::npos ? std::string("\\") + c
                                                                                  : std::string(1, c);
        return result;
    };
    // Offers the commands of an application or a group, and ends.
    auto const offer = [&](CLI::App const& commands) {
        std::string lines;
        for (CLI::App const* command : subcommandsOf(commands))
            lines += "    " + quoted(command->get_name() + ":" + command->get_description()) + "\n";
        return "verbs=(\n" + lines +
               ")\nif ((CURRENT == 2)); then\n    _describe verb verbs\n    return\nfi\n";
    };
    std::string groups, cases;
    for (CLI::App const* group : groupsOf(app))
        groups += "if [[ $words[1] == " + group->get_name() + " ]]; then\n" + offer(*group) +
                  "words[2]=\"$words[1] $words[2]\"\nshift words\n((CURRENT--))\nfi\n";
    for (CLI::App const* verb : verbsOf(app)) {
        cases += "    " + quoted(nameOf(*verb)) + ") _arguments";
        for (Argument const& argument : argumentsOf(*verb, false))
            for (std::string const& name : argument.names()) {
                std::string const isRepeated = argument.isRepeated() ? "*" : "";
                std::string argumentText = isRepeated + name + "[" + plain(argument.description()) + "]";
                if (argument.takesValue())
                    argumentText +=
                        ":" + argument.valueName() + ":" +
                        (argument.choices().empty() ? "_files" : "(" + joined(argument.choices(), "") + ")");
                cases += " \\\n        " + quoted(argumentText);
            }
        cases += " \\\n        '*:file:_files' ;;\n";
    }
    return "#compdef kxmodel\n# Completes calls of kxmodel in zsh.\nlocal -a verbs\n" + offer(app) +
           "shift words\n((CURRENT--))\n" + groups + "case $words[1] in\n" + cases + "esac\n";
}

} // namespace

std::optional<std::string> manualText(CLI::App const& app, std::string_view form) {
    if (form == "man")
        return manualPage(app);
    if (form == "bash")
        return bashCompletion(app);
    if (form == "fish")
        return fishCompletion(app);
    if (form == "zsh")
        return zshCompletion(app);
    return std::nullopt;
}

} // namespace kxmodel
