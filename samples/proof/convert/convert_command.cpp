// vaskel-proof convert: text from one Unicode form to another.

#include <algorithm>
#include <cctype>
#include <memory>
#include <new>

#include "samples/proof/byte_source.h"
#include "samples/proof/commands.h"
#include "samples/proof/console.h"
#include "samples/proof/convert/text_forms.h"
#include "samples/proof/failure.h"
#include "samples/proof/interrupt.h"
#include "samples/proof/make/picture.h"
#include "samples/proof/numbers.h"
#include "samples/proof/output_file.h"
#include "samples/proof/overwrite.h"

namespace Proof {
namespace {

struct ConvertOptions {
    std::string input = "-";
    std::string output = "-";
    std::string from = "auto";
    std::string to = "utf8";
    bool ascii85 = false;
    bool lossy = false;
    bool force = false;
    bool quiet = false;
};

struct FormName {
    const char* name;
    TextTarget target;
};

// The first name of each form and order is the one that messages tell.
constexpr FormName kForms[] = {
    {"utf8", {TextForm::Utf8, true}},          {"utf16be", {TextForm::Utf16, true}},
    {"utf16le", {TextForm::Utf16, false}},     {"utf32be", {TextForm::Utf32, true}},
    {"utf32le", {TextForm::Utf32, false}},     {"escaped", {TextForm::Escaped, true}},
    {"escapedle", {TextForm::Escaped, false}}, {"hex", {TextForm::Hex, true}},
    {"hexle", {TextForm::Hex, false}},         {"utf16", {TextForm::Utf16, true}},
    {"utf32", {TextForm::Utf32, true}},        {"escapedbe", {TextForm::Escaped, true}},
    {"hexbe", {TextForm::Hex, true}},
};

// "UTF-16BE" is utf16be.
std::optional<TextTarget> formNamed(std::string name) {
    std::erase_if(name, [](char c) { return c == '-' || c == '_'; });
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const FormName& form : kForms)
        if (name == form.name) return form.target;
    return std::nullopt;
}

TextTarget targetOf(const ConvertOptions& options) {
    const std::optional<TextTarget> target = formNamed(options.to);
    if (!target)
        throw Failure(
            "--to takes utf8, utf16be, utf16le, utf32be, utf32le, escaped, escaped-le, hex or "
            "hex-le, not \"" +
                oneLine(options.to) + "\"",
            kExitUsage);
    return *target;
}

// Nothing for "auto". Input has its byte order in its mark, whatever the name.
std::optional<TextForm> givenForm(const ConvertOptions& options) {
    if (options.from == "auto") return std::nullopt;
    const std::optional<TextTarget> given = formNamed(options.from);
    if (!given)
        throw Failure("--from takes auto, utf8, utf16, utf32, escaped or hex, not \"" +
                          oneLine(options.from) + "\"",
                      kExitUsage);
    return given->form;
}

std::string allOf(const std::string& path) {
    const auto source = openBytes(path, EmptyFile::Permitted);
    std::string text;
    if (source->size() > text.max_size() / 8) throw std::bad_alloc();
    text.resize(static_cast<std::size_t>(source->size()));
    text.resize(source->readAt(0, text.data(), text.size()));
    return text;
}

TextForm formOf(const std::string& text, const ConvertOptions& options) {
    if (const auto given = givenForm(options)) return *given;
    if (const auto found = detectTextForm(text)) return *found;
    throw fileFailure(options.input,
                      "begins with no mark of a form, and with no byte of UTF-8 below F0"
                      " (--from utf8 takes it for UTF-8 all the same)");
}

int runConvert(const ConvertOptions& options, Console& console) {
    console.setQuiet(options.quiet);
    const TextTarget target = targetOf(options);
    givenForm(options);
    OutputFile::probe(options.output);
    requirePermission({options.output}, options.force);
    const std::string text = allOf(options.input);
    const TextForm form = formOf(text, options);
    ConvertedText result;
    try {
        result = convertText(text, form, target, options.lossy);
    } catch (const TextFault& fault) {
        throw fileFailure(options.input, std::string("cannot be converted from ") + nameOf(form) +
                                             " to " + nameOf(target.form) + ": " + fault.what());
    }
    const Interrupt interrupt;  // writing is short work and is finished
    OutputFile file(options.output);
    if (options.ascii85)
        file.write(ascii85({result.bytes.begin(), result.bytes.end()}));
    else
        file.write(result.bytes);
    file.commit();
    if (!options.quiet && options.output != "-")
        std::printf("%s: %s, %s characters\nwrote %s\n",
                    oneLine(options.input == "-" ? "standard input" : options.input).c_str(),
                    nameOf(form), grouped(result.characters).c_str(), options.output.c_str());
    return kExitDone;
}

}  // namespace

void addConvert(CLI::App& app, Command& chosen) {
    const auto options = std::make_shared<ConvertOptions>();
    CLI::App* convert =
        app.add_subcommand("convert", "convert text from one Unicode form to another");
    convert->footer(
        "Forms: utf8; utf16be, utf16le, utf32be, utf32le, which begin with a mark;\n"
        "escaped (\\376\\377\\000A) and hex (FEFF0041), UTF-16 as plain text, and both with -le.\n"
        "A character beyond U+FFFF becomes another one on its way from or to UTF-16, and\n"
        "malformed UTF-8 may be read as something else: --lossy permits both.\n"
        "Example: vaskel-proof convert names.txt --to utf16le -o names-16.txt");
    convert->add_option("INPUT", options->input, "text file; standard input if not given, or -")
        ->type_name("");
    convert
        ->add_option("--from", options->from,
                     "the input's form: utf8, utf16, utf32, escaped or hex; auto looks at its\n"
                     "beginning")
        ->type_name("FORM")
        ->capture_default_str();
    convert->add_option("--to", options->to, "the result's form")
        ->type_name("FORM")
        ->capture_default_str();
    convert
        ->add_option("-o,--output", options->output, "file to write; standard output if not given")
        ->type_name("FILE");
    convert->add_flag("--ascii85", options->ascii85, "write the result's bytes as ASCII85");
    convert->add_flag("--lossy", options->lossy,
                      "convert also where the way back gives another text");
    convert->add_flag("-f,--force", options->force, "replace an older file without asking");
    convert->add_flag("-q,--quiet", options->quiet, "say nothing unless something is wrong");
    convert->final_callback([options, &chosen] {
        chosen = [options](Console& console) { return runConvert(*options, console); };
    });
}

}  // namespace Proof
