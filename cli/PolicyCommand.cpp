#include "CommandRegistry.hpp"

#include <corvane/soa/common/ObjectPropertyPolicy.hpp>
#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/internal/common/PolicyMarshaller.hpp>

#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace cvsoa {

namespace {

using Corvane::Soa::Common::ObjectPropertyPolicy;
using Corvane::Soa::Common::PolicyProperty;
using Corvane::Soa::Common::PolicyType;
using Corvane::Soa::Common::Exceptions::DomException;
using Corvane::Soa::Common::Exceptions::IOException;
using Corvane::Soa::Internal::Common::PolicyMarshaller;

// Exit status of `diff` when the policies differ (1 and 2 are taken by bad input and usage).
constexpr int kPoliciesDiffer = 3;

struct PolicyOptions {
    std::vector<std::string> files;
    std::string output;
};

std::string label(const std::string& path) { return path == "-" ? "standard input" : path; }

// Adds the policy file `path` ("-": standard input) to `policy`; the fault's message otherwise.
bool tryLoad(ObjectPropertyPolicy& policy, const std::string& path, std::string& fault) {
    try {
        if (path == "-") {
            Corvane::Soa::Common::Xml::SAXToNodeParser parser;
            PolicyMarshaller::load(policy, *parser.parseStream(&std::cin, "UTF-8"));
        } else {
            policy.load(path);
        }
        return true;
    } catch (const DomException& e) {
        fault = e.getMessage();
    } catch (const IOException& e) {
        fault = e.getMessage() + "\n(check that the file exists and can be read)";
    }
    return false;
}

void fail(const std::string& path, const std::string& fault) {
    std::cerr << "cvsoa policy: " << label(path) << ": " << fault;
    if (fault.empty() || fault.back() != '\n') {
        std::cerr << '\n';
    }
    throw CLI::RuntimeError(1);
}

ObjectPropertyPolicy loadAll(const std::vector<std::string>& paths) {
    ObjectPropertyPolicy policy;
    std::string fault;
    for (const std::string& path : paths) {
        if (!tryLoad(policy, path, fault)) {
            fail(path, fault);
        }
    }
    return policy;
}

// The text to standard output, or to the file named by -o.
void emit(const std::string& output, const std::string& text) {
    if (output.empty() || output == "-") {
        std::cout << text;
        return;
    }
    std::ofstream out(output, std::ios::binary);
    if (!out.write(text.data(), static_cast<std::streamsize>(text.size())) || !out.flush()) {
        fail(output, "cannot be written (check the directory and its permissions)");
    }
}

// "withProperties, asAttribute=false"; "(none)" without modifiers.
std::string modifierText(const std::map<std::string, std::string>& modifiers) {
    std::string text;
    for (const auto& modifier : modifiers) {
        const bool on = modifier.second == "1" || modifier.second == "true";
        text += (text.empty() ? "" : ", ") + modifier.first + (on ? "" : "=false");
    }
    return text.empty() ? "(none)" : text;
}

std::string show(const ObjectPropertyPolicy& policy) {
    std::ostringstream out;
    std::size_t properties = 0;
    for (const PolicyType& type : policy.getTypes()) {
        properties += type.getProperties().size();
    }
    out << "policy: " << policy.getTypes().size() << " types, " << properties
        << " properties; modifiers " << modifierText(policy.getModifiers()) << '\n';
    for (const PolicyType& type : policy.getTypes()) {
        out << "type " << type.getName() << ": " << modifierText(type.getModifiers()) << '\n';
        for (const PolicyProperty& property : type.getProperties()) {
            out << "  " << property.getName() << ": " << modifierText(property.getModifiers())
                << '\n';
        }
    }
    return out.str();
}

// The types and properties of `a` and `b` that differ: "-" only in a, "+" only in b, "~" in both
// but different (with the modifiers of a, then those of b).
std::string diff(const ObjectPropertyPolicy& a, const ObjectPropertyPolicy& b) {
    std::ostringstream out;
    if (a.getModifiers() != b.getModifiers()) {
        out << "~ policy: " << modifierText(a.getModifiers()) << " -> "
            << modifierText(b.getModifiers()) << '\n';
    }
    std::set<std::string> names;
    for (const ObjectPropertyPolicy* policy : {&a, &b}) {
        for (const PolicyType& type : policy->getTypes()) {
            names.insert(type.getName());
        }
    }
    for (const std::string& name : names) {
        const PolicyType* type = a.getType(name);
        const PolicyType* changed = b.getType(name);
        if (changed == nullptr) {
            out << "- type " << type->toString() << '\n';
            continue;
        }
        if (type == nullptr) {
            out << "+ type " << changed->toString() << '\n';
            continue;
        }
        if (*type == *changed) {
            continue;
        }
        const PolicyType& other = *changed;
        out << "~ type " << other.getName();
        if (type->getModifiers() != other.getModifiers()) {
            out << ": " << modifierText(type->getModifiers()) << " -> "
                << modifierText(other.getModifiers());
        }
        out << '\n';
        std::set<std::string> properties;
        for (const PolicyType* each : {type, changed}) {
            for (const PolicyProperty& property : each->getProperties()) {
                properties.insert(property.getName());
            }
        }
        for (const std::string& property : properties) {
            const PolicyProperty* before = type->getProperty(property);
            const PolicyProperty* after = other.getProperty(property);
            if (after == nullptr) {
                out << "  - " << property << '\n';
            } else if (before == nullptr) {
                out << "  + " << property << '\n';
            } else if (*before != *after) {
                out << "  ~ " << property << ": " << modifierText(before->getModifiers()) << " -> "
                    << modifierText(after->getModifiers()) << '\n';
            }
        }
    }
    return out.str();
}

void addOutputOption(CLI::App* command, PolicyOptions& options) {
    command->add_option("-o,--output", options.output, "write here instead of standard output");
}

void addPolicyCommand(CLI::App& app) {
    CLI::App* policy =
        app.add_subcommand("policy", "Show, check, merge and compare object property policy files");
    policy->require_subcommand(1);

    auto showOptions = std::make_shared<PolicyOptions>();
    CLI::App* showCommand =
        policy->add_subcommand("show", "Print a policy's types, properties and their modifiers");
    showCommand->add_option("file", showOptions->files, "policy file ('-': standard input)")
        ->required()
        ->expected(1);
    addOutputOption(showCommand, *showOptions);
    showCommand->callback(
        [showOptions] { emit(showOptions->output, show(loadAll(showOptions->files))); });

    auto checkOptions = std::make_shared<PolicyOptions>();
    CLI::App* checkCommand = policy->add_subcommand(
        "check", "Check policy files; print each file's first fault (exit status 1)");
    checkCommand->add_option("files", checkOptions->files, "policy files ('-': standard input)")
        ->required();
    checkCommand->callback([checkOptions] {
        bool failed = false;
        for (const std::string& path : checkOptions->files) {
            ObjectPropertyPolicy policy;
            std::string fault;
            if (tryLoad(policy, path, fault)) {
                std::cout << label(path) << ": ok, " << policy.getTypes().size() << " types\n";
            } else {
                std::cout << label(path) << ": " << fault << '\n';
                failed = true;
            }
        }
        if (failed) {
            throw CLI::RuntimeError(1);
        }
    });

    auto mergeOptions = std::make_shared<PolicyOptions>();
    CLI::App* mergeCommand = policy->add_subcommand(
        "merge", "Load policy files in order into one policy and write it as a policy file");
    mergeCommand->add_option("files", mergeOptions->files, "policy files ('-': standard input)")
        ->required();
    mergeCommand->add_option("-o,--output", mergeOptions->output,
                             "policy file to write, directories made as needed (default: "
                             "standard output)");
    mergeCommand->callback([mergeOptions] {
        const ObjectPropertyPolicy merged = loadAll(mergeOptions->files);
        if (mergeOptions->output.empty() || mergeOptions->output == "-") {
            std::cout << PolicyMarshaller::toXml(merged);
            return;
        }
        try {
            merged.save(mergeOptions->output);
        } catch (const IOException& e) {
            fail(mergeOptions->output,
                 e.getMessage() + "\n(check the directory and its permissions)");
        }
    });

    auto diffOptions = std::make_shared<PolicyOptions>();
    CLI::App* diffCommand = policy->add_subcommand(
        "diff",
        "Print the types and properties that differ between two policy files (exit "
        "status 3 when they differ)");
    diffCommand->add_option("files", diffOptions->files, "the two policy files ('-': stdin)")
        ->required()
        ->expected(2);
    addOutputOption(diffCommand, *diffOptions);
    diffCommand->callback([diffOptions] {
        const ObjectPropertyPolicy a = loadAll({diffOptions->files[0]});
        const ObjectPropertyPolicy b = loadAll({diffOptions->files[1]});
        const std::string text = diff(a, b);
        emit(diffOptions->output, text.empty() ? "the policies are the same\n" : text);
        if (!text.empty()) {
            throw CLI::RuntimeError(kPoliciesDiffer);
        }
    });
}

const CommandRegistration registration(60, addPolicyCommand);

}  // namespace

}  // namespace cvsoa
