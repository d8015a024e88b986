#include "command/result_document.h"

#include "db/database.h"
#include "device/device_identity.h"
#include "platform/debug_log.h"
#include "support/fake_device.h"

namespace tarvo_remote_control {

namespace {

using Lines = std::vector<std::string>;

const std::string kDeclaration = R"(<?xml version="1.0" encoding="utf-8"?>)";
const std::string kIdentity =
    "<id>headend</id><mac>02:00:00:00:00:01</mac><serialNumber>A123</serialNumber>"
    "<zenContractId>C-77</zenContractId>";

// The whole document, without indenting.
std::string documentWith(const std::string& result, const std::string& errors,
                         const std::string& data, const std::string& commandId = "1") {
    return kDeclaration + "<commandResult>" + kIdentity + "<commandId>" + commandId +
           "</commandId><result>" + result + "</result>" + errors + data + "</commandResult>";
}

std::string errorElement(const std::string& code, const std::string& text) {
    return "<error><id>" + code + "</id><text>" + text + "</text></error>";
}

const std::string kPristine = documentWith("1", "<errors/>", "<data/>");

class ResultOfCommand : public test::DeviceTest {
  protected:
    ResultOfCommand() {
        device.execute(tarvodb::kConfigDatabase,
                       "INSERT INTO configuracionWebGlobal VALUES"
                       " (1, 'identificacion_contrato', 'C-77', 0)");
        becomeModel("QRA-310");
    }

    static std::string flat(ResultDocument& result) { return result.toXml(document::kNoIndenting); }

    // The document after `xml` was loaded into a new one.
    static std::string flatAfterLoading(const std::string& xml) {
        ResultDocument result;
        result.loadXml(xml);
        return flat(result);
    }

    // The text that the `result` element has before printing sets it.
    static std::string outcome(ResultDocument& result) {
        document::XmlNode* probe = result.createNode("probe");
        result.appendToData(probe);
        return ResultDocument::findChild(*probe->parent()->parent(), "result")->value();
    }
};

}  // namespace

TEST_F(ResultOfCommand, SaysWhoAnswersAndThatNothingWentWrong) {
    ResultDocument result;
    EXPECT_EQ(result.toXml(),
              "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
              "<commandResult>\n"
              "\t<id>headend</id>\n"
              "\t<mac>02:00:00:00:00:01</mac>\n"
              "\t<serialNumber>A123</serialNumber>\n"
              "\t<zenContractId>C-77</zenContractId>\n"
              "\t<commandId>1</commandId>\n"
              "\t<result>1</result>\n"
              "\t<errors/>\n"
              "\t<data/>\n"
              "</commandResult>\n");
    EXPECT_TRUE(result.errors().empty());
}

TEST_F(ResultOfCommand, HasNoLineFeedsWithoutIndenting) {
    ResultDocument result;
    EXPECT_EQ(flat(result), kPristine);
}

TEST_F(ResultOfCommand, TakesTheIdentityAsItIsWhenMade) {
    DeviceIdentity::destroyInstance();
    ResultDocument before;
    becomeModel("RNB-K408");
    ResultDocument after;
    EXPECT_EQ(flat(before), kDeclaration +
                                "<commandResult><id/><mac/><serialNumber/><zenContractId/>"
                                "<commandId>1</commandId><result>1</result><errors/><data/>"
                                "</commandResult>");
    EXPECT_EQ(flat(after), kPristine);
}

TEST_F(ResultOfCommand, CopiesTheTextsOfANewElement) {
    ResultDocument result;
    std::string name = "channel";
    std::string value = "Astra";
    document::XmlNode* node = result.createNode(name.c_str(), value.c_str());
    name = "gone...";
    value = "gone!";
    EXPECT_EQ(node->parent(), nullptr);
    result.appendToData(node);
    EXPECT_EQ(flat(result),
              documentWith("1", "<errors/>", "<data><channel>Astra</channel></data>"));
}

TEST_F(ResultOfCommand, ANewElementWithoutValueHasNoText) {
    ResultDocument result;
    result.appendToData(result.createNode("none"));
    result.appendToData(result.createNode("empty", ""));
    EXPECT_EQ(flat(result), documentWith("1", "<errors/>", "<data><none/><empty/></data>"));
}

TEST_F(ResultOfCommand, EscapesMarkupAndKeepsBytesAbove127) {
    ResultDocument result;
    result.appendToData(result.createNode("text", "a & b < c > d \" e ' f 50% \xc3\xa9\xff"));
    EXPECT_EQ(flat(result),
              documentWith("1", "<errors/>",
                           "<data><text>a &amp; b &lt; c &gt; d &quot; e &apos; f 50% "
                           "\xc3\xa9\xff</text></data>"));
}

TEST_F(ResultOfCommand, AppendsDataInOrder) {
    ResultDocument result;
    result.appendToData(result.createNode("a", "1"));
    result.appendToData(result.createNode("b", "2"));
    result.appendToData(result.createNode("a", "3"));
    EXPECT_EQ(flat(result),
              documentWith("1", "<errors/>", "<data><a>1</a><b>2</b><a>3</a></data>"));
}

TEST_F(ResultOfCommand, FindsTheFirstChildOfExactlyThatName) {
    ResultDocument result;
    document::XmlNode* parent = result.createNode("parent");
    document::XmlNode* first = result.createNode("child", "1");
    parent->append_node(result.createNode("Child", "0"));
    parent->append_node(result.createNode("children", "0"));
    parent->append_node(first);
    parent->append_node(result.createNode("child", "2"));
    EXPECT_EQ(ResultDocument::findChild(*parent, "child"), first);
    EXPECT_EQ(ResultDocument::findChild(*parent, "CHILD"), nullptr);
    EXPECT_EQ(ResultDocument::findChild(*first, "child"), nullptr);
}

TEST_F(ResultOfCommand, PrintsTheCommandsNumber) {
    ResultDocument result;
    result.setCommandId(-2147483647);
    EXPECT_EQ(flat(result), documentWith("1", "<errors/>", "<data/>", "-2147483647"));
}

TEST_F(ResultOfCommand, OutcomeIsANumberUntilPrintingSetsIt) {
    ResultDocument result;
    EXPECT_EQ(outcome(result), "1");
    result.setResult(-12);
    EXPECT_EQ(outcome(result), "-12");
    result.toXml();
    EXPECT_EQ(outcome(result), "1");
}

TEST_F(ResultOfCommand, AnErrorWithoutDetailHasTheTextOfItsCode) {
    ResultDocument result;
    result.addError(ErrorCode{202});
    EXPECT_EQ(flat(result),
              documentWith("0",
                           "<errors><error><id>202</id><text>Could not set configuration</text>"
                           "</error></errors>",
                           "<data/>"));
    EXPECT_EQ(result.errors(), std::set{ErrorCode{202}});
}

TEST_F(ResultOfCommand, AnErrorsDetailFollowsTheTextOfItsCode) {
    ResultDocument result;
    result.addError(ErrorCode{103}, "port");
    EXPECT_EQ(
        flat(result),
        documentWith("0", "<errors>" + errorElement("103", "Invalid value: port") + "</errors>",
                     "<data/>"));
}

TEST_F(ResultOfCommand, AnUnknownErrorIsRecordedAsSuch) {
    ResultDocument result;
    result.addError(ErrorCode{999});
    EXPECT_EQ(flat(result),
              documentWith("0", "<errors>" + errorElement("999", "Unknown Error") + "</errors>",
                           "<data/>"));
    EXPECT_EQ(result.errors(), std::set{ErrorCode{999}});
}

TEST_F(ResultOfCommand, ErrorsStandInTheirOrderAndTheirCodesAscend) {
    ResultDocument result;
    result.addError(ErrorCode{401}, "");
    result.addError(ErrorCode{102}, "");
    EXPECT_EQ(*result.errors().begin(), ErrorCode::database);
    EXPECT_EQ(flat(result),
              documentWith("0",
                           "<errors>" + errorElement("401", "Invalid module input") +
                               errorElement("102", "Could not access database") + "</errors>",
                           "<data/>"));
}

TEST_F(ResultOfCommand, ARepeatedErrorIsASecondElementOfOneCode) {
    ResultDocument result;
    result.addError(ErrorCode{103}, "a");
    result.addError(ErrorCode{103}, "b");
    EXPECT_EQ(result.errors(), std::set{ErrorCode{103}});
    EXPECT_EQ(flat(result), documentWith("0",
                                         "<errors>" + errorElement("103", "Invalid value: a") +
                                             errorElement("103", "Invalid value: b") + "</errors>",
                                         "<data/>"));
}

TEST_F(ResultOfCommand, ErrorZeroIsAnErrorToo) {
    ResultDocument result;
    result.addError(ErrorCode{0});
    EXPECT_EQ(
        flat(result),
        documentWith("0", "<errors>" + errorElement("0", "No error") + "</errors>", "<data/>"));
}

TEST_F(ResultOfCommand, ErrorsAreLoggedWithTheDebugBit) {
    ResultDocument result;
    result.addError(ErrorCode{501});
    EXPECT_TRUE(device.logLines().empty());
    platform::debugMask = platform::kDebugLogBit;
    result.addError(ErrorCode{103}, "50%s");
    result.addError(ErrorCode{202});
    EXPECT_EQ(device.logLines(), (Lines{"3: Command error: 103 Invalid value: 50%s",
                                        "3: Command error: 202 Could not set configuration"}));
}

TEST_F(ResultOfCommand, ResetForgetsErrorsAndData) {
    ResultDocument result;
    result.setCommandId(7);
    result.addError(ErrorCode{102});
    result.appendToData(result.createNode("a"));
    result.toXml();
    result.reset();
    EXPECT_TRUE(result.errors().empty());
    EXPECT_EQ(outcome(result), "1");
    result.reset();
    EXPECT_EQ(flat(result), documentWith("1", "<errors/>", "<data/>", "7"));
}

TEST_F(ResultOfCommand, LoadedDocumentReplacesTheOldOne) {
    const std::string stored =
        kDeclaration +
        "<commandResult><id>other</id><mac>m</mac><serialNumber>s</serialNumber>"
        "<zenContractId>z</zenContractId><commandId>9</commandId><result>0</result>"
        "<errors><error><id>103</id><text>Invalid value: a &amp; b</text></error>"
        "<error><id>102</id><text>t</text></error></errors><data><x>1</x></data>"
        "</commandResult>";
    ResultDocument result;
    result.addError(ErrorCode{401});
    result.appendToData(result.createNode("old"));
    result.loadXml(stored);
    EXPECT_EQ(result.errors(), (std::set{ErrorCode{102}, ErrorCode{103}}));
    EXPECT_EQ(flat(result), stored);
}

TEST_F(ResultOfCommand, LoadedDocumentIsCopied) {
    std::string xml = "<commandResult><id>other</id></commandResult>";
    ResultDocument result;
    result.loadXml(xml);
    xml.assign(xml.size(), '*');
    EXPECT_NE(flat(result).find("<id>other</id>"), std::string::npos);
}

TEST_F(ResultOfCommand, ThatIsIndentedLoadsTheSame) {
    ResultDocument result;
    result.addError(ErrorCode{103}, "a");
    EXPECT_EQ(flatAfterLoading(result.toXml()), flat(result));
}

TEST_F(ResultOfCommand, LoadedDocumentWithoutACommandResultIsMadeAnew) {
    EXPECT_EQ(flatAfterLoading(""), kPristine);
    EXPECT_EQ(flatAfterLoading("<other><commandResult/></other>"), kPristine);
    EXPECT_EQ(flatAfterLoading("<CommandResult><id>x</id></CommandResult>"), kPristine);
}

TEST_F(ResultOfCommand, LoadedDocumentIsCompletedInOrder) {
    EXPECT_EQ(flatAfterLoading("<commandResult/>"), kPristine);
    EXPECT_EQ(flatAfterLoading("<commandResult><data><x/></data><result>5</result><mac>m</mac>"
                               "</commandResult>"),
              kDeclaration +
                  "<commandResult><data><x/></data><result>1</result><mac>m</mac><id>headend</id>"
                  "<serialNumber>A123</serialNumber><zenContractId>C-77</zenContractId>"
                  "<commandId>1</commandId><errors/></commandResult>");
}

TEST_F(ResultOfCommand, LoadedElementsAreTheOnesThatAreSetLater) {
    ResultDocument result;
    result.loadXml(
        "<commandResult><commandId>3</commandId><result>0</result><errors/><data/>"
        "</commandResult>");
    result.setCommandId(8);
    result.addError(ErrorCode{202});
    result.appendToData(result.createNode("x"));
    EXPECT_EQ(flat(result),
              kDeclaration + "<commandResult><commandId>8</commandId><result>0</result><errors>" +
                  errorElement("202", "Could not set configuration") +
                  "</errors><data><x/></data>" + kIdentity + "</commandResult>");
}

TEST_F(ResultOfCommand, OnlyLoadedErrorsWithCodeAndTextCount) {
    const std::string errors =
        "<errors><error><id>103</id><text/></error><error><id>104</id></error>"
        "<error><text>105</text></error><warning><id>106</id><text>t</text></warning>"
        "<error><text>t</text><id>107x</id></error><error><id>none</id><text>t</text></error>"
        "</errors>";
    ResultDocument result;
    result.loadXml("<commandResult>" + errors + "</commandResult>");
    EXPECT_EQ(result.errors(), (std::set{ErrorCode{0}, ErrorCode{103}, ErrorCode{107}}));
    EXPECT_NE(flat(result).find(errors), std::string::npos);
}

TEST_F(ResultOfCommand, LoadedEmptyErrorsForgetTheOldOnes) {
    ResultDocument result;
    result.addError(ErrorCode{401});
    result.loadXml("<commandResult><errors/></commandResult>");
    EXPECT_TRUE(result.errors().empty());
}

TEST_F(ResultOfCommand, LoadedDocumentWithoutErrorsElementKeepsTheCodes) {
    ResultDocument result;
    result.addError(ErrorCode{401});
    result.loadXml("<commandResult><data/></commandResult>");
    EXPECT_EQ(result.errors(), std::set{ErrorCode{401}});
}

TEST_F(ResultOfCommand, LoadedTextThatIsNotXmlIsRefused) {
    ResultDocument result;
    EXPECT_THROW(result.loadXml("<commandResult><id></commandResult"), document::ParseError);
}

}  // namespace tarvo_remote_control
