// What a command answers: who answered, the outcome, the errors met and the data produced.
#pragma once

#include <set>
#include <string>

#include "command/error_codes.h"
#include "document/writer.h"
#include "document/xml.h"

namespace tarvo_remote_control {

// An XML document with a single `commandResult` element. It owns the nodes and texts of every
// element that its command makes, attached or not.
class ResultDocument {
  public:
    // The children of commandResult, with who answers taken from the device identity as it is now.
    ResultDocument();
    ResultDocument(const ResultDocument&) = delete;
    ResultDocument& operator=(const ResultDocument&) = delete;

    // A new, unattached element. Both texts are copied; a null value gives an element without
    // text. The element lives as long as this document.
    document::XmlNode* createNode(const char* name, const char* value = nullptr);
    // What it writes is appended to `parent`, a node of this document.
    document::TreeWriter writerInto(document::XmlNode& parent) { return {document_, parent}; }

    // Records an error: its code, and an `error` element with the code's text, followed by ": "
    // and `detail` when there is one.
    void addError(ErrorCode code, const std::string& detail = "");

    // The codes recorded so far, ascending.
    [[nodiscard]] const std::set<ErrorCode>& errors() const { return errorCodes_; }

    // Forgets errors and data, and sets the outcome back to 1, for another run of the command.
    void reset();

    void setCommandId(int id);
    // What a command says of its own outcome; toXml replaces it by its own 1 or 0.
    void setResult(int value);
    void appendToData(document::XmlNode* element);

    // Replaces the document by the parse of `text` and adds what it lacks. Throws
    // document::ParseError; the document is then as a new one, but for the error codes.
    void loadXml(const std::string& text);

    // The document as text, with its declaration. Sets the outcome first: 1 without errors, else 0.
    std::string toXml(int printFlags = 0);

    // The first child whose name is exactly `name`, null when there is none.
    static document::XmlNode* findChild(const document::XmlNode& parent, const char* name);

  private:
    document::XmlNode* appendNew(document::XmlNode* parent, const char* name,
                                 const char* value = nullptr);
    document::XmlNode* childOrNew(document::XmlNode* parent, const char* name,
                                  const char* value = nullptr);
    // Appends what the document lacks, and finds the elements that change later.
    void completeShape();
    void readErrorCodes();
    void setText(document::XmlNode* node, int value);

    document::XmlDocument document_;
    document::XmlNode* commandId_ = nullptr;
    document::XmlNode* result_ = nullptr;
    document::XmlNode* errors_ = nullptr;
    document::XmlNode* data_ = nullptr;
    std::set<ErrorCode> errorCodes_;
};

// The line that every document starts with, without a line end.
inline constexpr const char* kXmlDeclaration = R"(<?xml version="1.0" encoding="utf-8"?>)";

}  // namespace tarvo_remote_control
