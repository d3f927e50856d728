#include "kestrinectl/CommandHelp.h"

#include "kestrinectl/Suggestion.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/Words.h"

#include <algorithm>
#include <iostream>

namespace kestrine {

namespace {

constexpr std::size_t descriptionColumn = 34;
constexpr std::size_t lineWidth = 100;

/// The text with line breaks between words.
std::string wrapped(const std::string& text, std::size_t width) {
    std::string lines;
    std::size_t lineStart = 0;
    for (const std::string& word : CLI::detail::split(text, ' ')) {
        const bool isFull = lines.size() - lineStart + 1 + word.size() > width;
        if (!lines.empty())
            lines += isFull ? '\n' : ' ';
        if (isFull)
            lineStart = lines.size();
        lines += word;
    }
    return lines;
}

/// Commands without a group are only for other programs.
bool isShown(const CLI::App* command) { return !command->get_group().empty(); }

class HelpLayout final : public CLI::Formatter {
public:
    HelpLayout() {
        column_width(descriptionColumn);
        label("Positionals", "Arguments");
        label("SUBCOMMAND", "COMMAND");
    }

    /// All names of an option, its opposite included: "--exif, --no-exif".
    std::string make_option_name(const CLI::Option* option, bool isPositional) const override {
        if (isPositional)
            return option->get_name(true, false);
        std::vector<std::string> names;
        for (const std::string& name : option->get_snames())
            names.push_back("-" + name);
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
        return CLI::detail::join(names, ", ");
    }

    /// The name of the value; the description has its valid values and the options that exclude it.
    std::string make_option_opts(const CLI::Option* option) const override {
        if (option->get_positional())
            return option->get_expected_max() > 1 ? "..." : "";
        if (option->get_items_expected_min() == 0)
            return "";
        return " " + (option->get_option_text().empty() ? "VALUE" : option->get_option_text());
    }

    std::string make_option_desc(const CLI::Option* option) const override {
        return wrapped(option->get_description(), lineWidth - descriptionColumn);
    }

    /// The help with one empty line between two groups of options.
    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
        const std::string help = CLI::Formatter::make_help(app, std::move(name), mode);
        return CLI::detail::find_and_replace(help, "\n\n\n", "\n\n");
    }

    std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode) const override {
        std::string lines;
        for (const CLI::App* command : app->get_subcommands(isShown))
            lines += make_subcommand(command);
        return lines.empty() ? "" : "\nCommands:\n" + lines;
    }
};

/// An unknown word after `help`; the message is complete.
class UnknownTopic : public CLI::ParseError {
public:
    explicit UnknownTopic(const std::string& message)
        : CLI::ParseError(message, CLI::ExitCodes::ExtrasError) {}
};

/// A command and how it is typed.
struct Command {
    const CLI::App* app;
    std::string typed;
    std::size_t wordCount; ///< how many of the words name it
};

std::vector<const CLI::App*> subcommandsOf(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App*) { return true; });
}

const CLI::App* subcommandNamed(const CLI::App& app, const std::string& name) {
    for (const CLI::App* subcommand : subcommandsOf(app))
        if (subcommand->get_name() == name)
            return subcommand;
    return nullptr;
}

/// The command that the first words name; further words are ignored.
Command commandIn(const CLI::App& program, const std::vector<std::string>& words) {
    Command command{&program, program.get_name(), 0};
    while (command.wordCount < words.size()) {
        const CLI::App* next = subcommandNamed(*command.app, words[command.wordCount]);
        if (next == nullptr)
            break;
        command = {next, command.typed + " " + next->get_name(), command.wordCount + 1};
    }
    return command;
}

std::string question(const std::optional<std::string>& meant) {
    return meant ? "did you mean " + quoted(*meant) + "? " : "";
}

/// The commands of `app`, then the commands of these, such as "list" for "sets list".
std::optional<std::string> nearestCommand(const CLI::App& app, const std::string& word) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands(isShown))
        names.push_back(command->get_name());
    if (const auto nearest = nearestWord(word, names))
        return nearest;
    for (const CLI::App* command : subcommandsOf(app))
        if (const auto nearest = nearestCommand(*command, word))
            return command->get_name() + " " + *nearest;
    return std::nullopt;
}

/// "'kestrinectl help sets'"
std::string helpFor(const Command& command) {
    const std::string words = command.typed.substr(std::min(command.typed.find(' '), command.typed.size()));
    return "'kestrinectl help" + words + "'";
}

std::vector<std::string> optionNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
        for (const std::string& name : option->get_snames())
            names.push_back("-" + name);
    }
    return names;
}

/// A command, or an option for someone who typed it as a command ("version").
std::optional<std::string> nearestCommandOrOption(const CLI::App& app, const std::string& word) {
    const auto command = nearestCommand(app, word);
    return command ? command : nearestWord(word, optionNames(app));
}

std::string unknownCommand(const Command& parent, const std::string& word) {
    return "unknown command " + quoted(word) + "; " + question(nearestCommandOrOption(*parent.app, word))
           + helpFor(parent) + " lists all commands";
}

/// The option that a word names, alone or with its value; null if there is none.
const CLI::Option* optionNamed(const CLI::App& command, const std::string& word) {
    const bool isLong = word.starts_with("--");
    const std::string name = isLong ? word.substr(2, word.find('=') - 2) : word.substr(1, 1);
    for (const CLI::Option* option : command.get_options())
        if (isLong ? option->check_lname(name) : option->check_sname(name))
            return option;
    return nullptr;
}

bool takesNextWord(const CLI::Option& option, const std::string& word) {
    const bool hasValue = word.starts_with("--") ? word.find('=') != std::string::npos : word.size() > 2;
    return option.get_items_expected_min() > 0 && !hasValue;
}

/// The first word that looks like an option but is not one of the command.
std::optional<std::string> unknownOption(const Command& command, const std::vector<std::string>& words) {
    for (std::size_t i = command.wordCount; i < words.size() && words[i] != "--"; ++i) {
        if (!words[i].starts_with('-') || words[i] == "-")
            continue;
        const CLI::Option* option = optionNamed(*command.app, words[i]);
        if (option == nullptr)
            return words[i].substr(0, words[i].find('='));
        if (takesNextWord(*option, words[i]))
            ++i;
    }
    return std::nullopt;
}

/// The words that the parser does not expect, as typed. `program` must have tried to parse them.
std::string unexpectedWords(const CLI::App& program) {
    std::vector<std::string> words = program.remaining(true);
    for (std::string& word : words)
        word = quoted(typedWord(word));
    return CLI::detail::join(words, " ");
}

/// The parser's message, in simpler words where its own are unclear.
std::string plainMessage(const CLI::App& program, const CLI::ParseError& error) {
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr)
        return "unexpected " + unexpectedWords(program);
    const std::string message = error.what();
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
        const bool hasSeveral = message.find("At Most") != std::string::npos;
        return message.substr(0, message.find(':'))
               + (hasSeveral ? " is given more than once" : " needs a value");
    }
    return message;
}

void printHelp(const CLI::App& program, const std::vector<std::string>& words) {
    const Command command = commandIn(program, words);
    if (command.wordCount < words.size())
        throw UnknownTopic(unknownCommand(command, words[command.wordCount]));
    std::cout << command.app->get_formatter()->make_help(command.app, command.typed,
                                                         CLI::AppFormatMode::Normal);
}

} // namespace

void useHelpLayout(CLI::App& program) {
    program.formatter(std::make_shared<HelpLayout>());
    program.set_help_flag("-h,--help", "Print this help and exit");
}

void addHelpCommand(CLI::App& program) {
    CLI::App* command = program.add_subcommand("help", "Show the help of the program or of a command");
    program.footer(
        "'kestrinectl help COMMAND' shows the options of a command."); // commands copy earlier ones
    auto words = std::make_shared<std::vector<std::string>>();
    command->add_option("COMMAND", *words, "A command, such as: sets add");
    command->callback([&program, words] {
        std::ranges::transform(*words, words->begin(), typedWord);
        printHelp(program, *words);
    });
}

std::string complaintAbout(const CLI::App& program, const std::vector<std::string>& words,
                           const CLI::ParseError& error) {
    if (dynamic_cast<const UnknownTopic*>(&error) != nullptr)
        return error.what();
    const Command command = commandIn(program, words);
    if (const auto option = unknownOption(command, words))
        return "unknown option " + quoted(*option) + "; "
               + question(nearestWord(*option, optionNames(*command.app))) + helpFor(command)
               + " lists all options";
    const bool needsCommand = !subcommandsOf(*command.app).empty();
    if (needsCommand && command.wordCount < words.size())
        return unknownCommand(command, words[command.wordCount]);
    if (needsCommand)
        return "a command is missing; " + helpFor(command) + " lists all commands";
    return plainMessage(program, error) + "; " + helpFor(command) + " explains its use";
}

} // namespace kestrine
