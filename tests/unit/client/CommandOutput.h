#pragma once

#include <sstream>
#include <string>

#include "ExitCode.h"
#include "JsonPrinter.h"
#include "TextPrinter.h"

namespace vireo {

/// How a command of vireoctl ended, and what it said.
struct Outcome {
    ExitCode code = ExitCode::eDone;
    std::string out;
    std::string errors;
};

enum class Form { eLines, eTerminal, eJson };

/// Takes what a command prints in one of the forms.
class CommandOutput {
public:
    explicit CommandOutput(Form form)
        : m_text(out, errors, form == Form::eTerminal), m_isJson(form == Form::eJson) {}

    AnswerPrinter& printer() { return m_isJson ? static_cast<AnswerPrinter&>(m_json) : m_text; }
    Outcome ended(ExitCode code) const { return {code, out.str(), errors.str()}; }

    std::ostringstream out;
    std::ostringstream errors;

private:
    TextPrinter m_text;
    JsonPrinter m_json{out, errors};
    const bool m_isJson;
};

}  // namespace vireo
