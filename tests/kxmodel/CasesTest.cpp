// SPDX-License-Identifier: MIT
// Runs the scripts in the folder "cases", each a test of its own. cases/README.md tells how they are written.
#include "Program.h"

#include <AttributeContainer/RegistryFile.h>

#include <iomanip>
#include <map>
#include <optional>

using namespace kxmodel_test;
namespace fs = std::filesystem;

namespace {

/// What follows the text in front, when it begins with that.
std::optional<std::string> behind(std::string const& start, std::string const& text) {
    return text.starts_with(start) ? std::optional(text.substr(start.size())) : std::nullopt;
}

std::pair<std::string, std::string> dividedAt(std::string const& mark, std::string const& text) {
    std::size_t const at = text.find(mark);
    return at == text.npos ? std::pair(text, std::string())
                           : std::pair(text.substr(0, at), text.substr(at + mark.size()));
}

/// The words of a command line; those that begin with a quotation mark or an apostrophe go up to the next
/// one.
std::vector<std::string> wordsOf(std::string const& line) {
    std::vector<std::string> words;
    std::istringstream in(line);
    for (std::string word; in >> std::ws && in.good(); words.push_back(word))
        if (char const mark = static_cast<char>(in.peek()); mark == '\'' || mark == '"')
            in >> std::quoted(word, mark, '\0');
        else
            in >> word;
    return words;
}

/// A document's words. Ids of shared instances, which are new in each writing, are numbered as they come.
std::string comparable(std::string const& document) {
    std::map<std::string, std::string> ids;
    std::string result, previous;
    std::istringstream words(document);
    for (std::string word; words >> word; previous = word)
        result += (previous == "InstanceID" ? ids.emplace(word, std::to_string(ids.size() + 1)).first->second
                                            : word) +
                  ' ';
    return result;
}

/// "[*]" in the pattern is anything within a line.
bool matches(std::string_view pattern, std::string_view text) {
    std::size_t const wildcard = pattern.find("[*]");
    if (wildcard == pattern.npos)
        return pattern == text;
    if (text.substr(0, wildcard) != pattern.substr(0, wildcard))
        return false;
    for (std::size_t end = wildcard; end <= text.size(); ++end) {
        if (matches(pattern.substr(wildcard + 3), text.substr(end)))
            return true;
        if (end < text.size() && text[end] == '\n')
            return false;
    }
    return false;
}

/// Texts of a script with what its definitions say.
class Definitions {
public:
    void add(std::string const& definition) {
        texts_.insert_or_assign(dividedAt(" ", definition).first, dividedAt(" ", definition).second);
    }

    /// The text with everything in "${}" replaced. Throws std::out_of_range when that is not defined.
    std::string expanded(std::string text) const {
        for (std::size_t begin; (begin = text.rfind("${")) != text.npos;) {
            std::size_t const end = text.find('}', begin);
            text.replace(begin, end - begin + 1, meaningOf(text.substr(begin + 2, end - begin - 2)));
        }
        return text;
    }

private:
    std::string meaningOf(std::string const& call) const {
        if (call.starts_with("0x"))
            return std::string(1, static_cast<char>(std::stoi(call, nullptr, 16)));
        if (auto const [times, repeated] = dividedAt(" * ", call); !repeated.empty()) {
            std::string all;
            for (int i = std::stoi(times); i > 0; --i)
                all += meaningOf(repeated);
            return all;
        }
        auto const [name, arguments] = dividedAt(" ", call);
        auto const [first, second] = dividedAt(" ", arguments);
        auto const definition = texts_.find(name);
        if (definition == texts_.end())
            throw std::out_of_range('"' + name + "\" is not defined");
        std::string text = expanded(definition->second);
        for (auto const& [parameter, argument] : {std::pair("$2", second), {"$1", first}})
            for (std::size_t at = 0; (at = text.find(parameter, at)) != text.npos; at += argument.size())
                text.replace(at, 2, argument);
        return text;
    }

    std::map<std::string, std::string> texts_;
};

class Cases : public Program {
public:
    explicit Cases(fs::path script) : script_(std::move(script)), previousFolder_(fs::current_path()) {
        fs::current_path(pathOf(path("")));
    }
    ~Cases() override { fs::current_path(previousFolder_); }

protected:
    void TestBody() override {
        for (auto const& line : linesOf(contentOf(script_.parent_path() / "definitions.txt")))
            if (auto const definition = behind("define ", line))
                definitions_.add(*definition);
        lines_ = linesOf(contentOf(script_));
        ASSERT_TRUE(!lines_.empty() && lines_[0].starts_with("# ")) << "What is shown, and why?";
        for (; at_ < lines_.size(); ++at_)
            try {
                runLine();
            } catch (std::exception const& error) {
                fail(error.what());
            }
    }

private:
    using Files = std::map<std::string, std::string>;
    struct Output {
        std::string actual;
        std::string lines;      ///< All lines that the script gives.
        bool isInParts = false; ///< It says what occurs and what does not.
    };
    /// A command that was run; what is expected is what was there before, as long as nothing else is said.
    struct Step {
        Files expected, actual;
        Output out, err;
        int status = 0;
    };

    std::string const& here() const { return lines_[at_]; }
    void fail(std::string const& why) const { fail(why, at_); }
    void fail(std::string const& why, std::size_t at) const {
        ADD_FAILURE_AT(script_.string().c_str(), static_cast<int>(at + 1)) << lines_[at] << "\n" << why;
    }
    static bool isRemark(std::string const& line) { return line.empty() || line.starts_with("# "); }

    /// The lines below the present one, up to an empty one.
    std::string block() {
        std::string text;
        for (char const* separator = ""; at_ + 1 < lines_.size() && !lines_[at_ + 1].empty();
             separator = "\n")
            text += separator + definitions_.expanded(lines_[++at_]);
        return text;
    }

    Files files() const {
        Files all;
        for (auto const& entry : fs::recursive_directory_iterator("."))
            if (entry.is_regular_file())
                all[textOf(entry.path().lexically_relative(".").generic_u8string())] =
                    contentOf(entry.path());
        return all;
    }

    void runLine() {
        if (auto const definition = behind("define ", here()))
            definitions_.add(*definition);
        else if (auto const file = behind("--- ", here()))
            put(definitions_.expanded(*file), block());
        else if (auto const command = behind("$ kxmodel", here()))
            runStep(*command);
        else if (!isRemark(here()))
            fail("a script has no such line here");
    }

    void runStep(std::string const& commandLine) {
        std::size_t const begin = at_;
        auto const [withoutLine, line] = dividedAt(" => ", definitions_.expanded(commandLine));
        auto const [command, failure] = dividedAt(" =! ", withoutLine);
        std::vector<std::string> words = wordsOf(command);
        auto const redirection = [&words](char const* sign) {
            auto const at = std::find(words.begin(), words.end(), sign);
            if (words.end() - at < 2)
                return std::string();
            std::string const file = at[1];
            words.erase(at, at + 2);
            return file;
        };
        std::string const out = redirection(">"), in = redirection("<");
        std::string const input = in.empty() ? "" : contentOf(in);
        Step step;
        step.expected = files();
        Ending const result = run(words, input);
        if (out.empty())
            step.out.actual = result.out;
        else
            put(out, step.expected[out] = result.out);
        step.actual = files();
        step.err.actual = result.err;

        step.status = failure.empty() ? 0 : 2;
        if (!failure.empty())
            expectOutput(" has: " + failure, step.err);
        if (!line.empty())
            expectOutput(": " + line, step.out);
        readExpectations(step);
        if (result.status != step.status)
            fail("ended with status " + std::to_string(result.status) + "\n" + result.err, begin);
        for (Output const& output : {step.out, step.err})
            if ((!output.isInParts || !output.lines.empty()) && !matches(output.lines, output.actual))
                fail("== actual output\n" + output.actual + "== expected\n" + output.lines, begin);
        for (auto const& [name, content] : step.actual)
            if (!step.expected.contains(name) || step.expected[name] != content)
                fail("== changed file " + name + "\n" + content, begin);
        for (auto const& [name, content] : step.expected)
            if (!step.actual.contains(name))
                fail("== removed file " + name, begin);
    }

    void readExpectations(Step& step) {
        auto const isBegun = [](std::string const& line) {
            return line.starts_with("$ ") || line.starts_with("--- ") || line.starts_with("define ");
        };
        while (at_ + 1 < lines_.size() && !isBegun(lines_[at_ + 1])) {
            ++at_;
            if (auto const status = behind("exit ", here()))
                step.status = std::stoi(*status);
            else if (auto const file = behind("file ", here()))
                expectFile(*file, step);
            else if (auto const out = behind("out", here()))
                expectOutput(*out, step.out);
            else if (auto const err = behind("err", here()))
                expectOutput(*err, step.err);
            else if (!isRemark(here()))
                fail("nothing that can be expected");
        }
    }

    void expectParts(std::string const& parts, std::string const& text) {
        auto const part = behind(" has: ", parts), other = behind(" lacks: ", parts);
        if (!part && !other)
            return fail("nothing that can be expected");
        std::string const sought = definitions_.expanded(part ? *part : *other);
        if ((text.find(sought) != text.npos) != part.has_value())
            fail("== actual\n" + text);
    }

    void expectOutput(std::string const& text, Output& output) {
        if (auto const whole = text == ":" ? "" : behind(": ", text)) {
            output.lines += definitions_.expanded(*whole) + "\n";
        } else {
            expectParts(text, output.actual);
            output.isInParts = true;
        }
    }

    /// What the script says about a file need not be what it was.
    void expectFile(std::string const& text, Step& step) {
        std::string const name = text.substr(0, text.find_first_of(" :"));
        auto const file = step.actual.find(name);
        if (file == step.actual.end())
            return fail("there is no such file");
        step.expected[name] = file->second;
        auto const like = behind(name + " is like ", text), same = behind(name + " is ", text);
        if (!same && text != name + ":")
            return expectParts(text.substr(name.size()), file->second);
        std::size_t const at = at_;
        std::string const content = same ? step.actual.at(like ? *like : *same) : block();
        bool const isBytewise = same && !like;
        if (isBytewise ? content != file->second : comparable(content) != comparable(file->second))
            fail("== actual\n" + file->second + "\n== expected\n" + content, at);
    }

    fs::path script_;
    fs::path previousFolder_;
    Definitions definitions_;
    std::vector<std::string> lines_;
    std::size_t at_ = 0;
};

/// The scripts are known when the program starts, as other tests are.
bool const areRegistered = [] {
    for (auto const& entry : fs::directory_iterator(KX_TEST_CASES_DIR))
        if (fs::path const script = entry.path();
            script.extension() == ".test" && (Zorvan::AttributeContainer::RegistryFile::isSupported() ||
                                              !script.stem().string().ends_with("_hive")))
            ::testing::RegisterTest("Cases", script.stem().string().c_str(), nullptr, nullptr,
                                    script.string().c_str(), 1,
                                    [script]() -> Cases* { return new Cases(script); });
    return true;
}();

} // namespace
