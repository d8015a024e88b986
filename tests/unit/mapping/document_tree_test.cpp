#include "mapping/document_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "db/table.h"
#include "device/models.h"
#include "document/xml.h"

namespace mapping {

namespace {

using document::XmlNode;

void forEachGolden(
    const std::function<void(const std::string& model, const XmlNode& root)>& visit) {
    for (const std::string_view model : tarvo_remote_control::model::kAll) {
        const std::string path =
            std::string(TARVO_GOLDEN_FOLDER) + "/" + std::string(model) + ".xml";
        std::ostringstream content;
        content << std::ifstream(path).rdbuf();
        std::string text = content.str();
        ASSERT_FALSE(text.empty()) << path;
        document::XmlDocument document;
        document::parse(document, text);
        visit(std::string(model), *document.first_node());
    }
}

// Every row below `element`, with its path.
void forEachRow(const Element& element, const std::string& path,
                const std::function<void(const std::string& path, const Element&)>& visit) {
    forEachChild(element, [&](const Element& row) {
        const std::string rowPath = path + "/" + row.name;
        visit(rowPath, row);
        forEachRow(row, rowPath, visit);
    });
}

// Where a document has the elements, in the order of their rows, with what is not in the tree.
struct Places {
    std::set<std::string> found;
    std::vector<std::string> unknown;
    std::vector<std::string> notOfTheModel;
};

// The child elements; text has no name.
std::vector<const XmlNode*> elementsIn(const XmlNode& node) {
    std::vector<const XmlNode*> elements;
    for (const XmlNode& child : document::childrenOf(node)) {
        if (*child.name() != '\0') {
            elements.push_back(&child);
        }
    }
    return elements;
}

void place(const XmlNode& node, const Element& element, const std::string& path,
           const std::string& model, Places& places) {
    for (const XmlNode* child : elementsIn(node)) {
        const std::string childPath = path + "/" + child->name();
        const Element* row = childOf(element, child->name());
        if (row == nullptr || std::string(row->name) != child->name()) {
            places.unknown.push_back(model + childPath);
            continue;
        }
        if (!isExportedBy(row->exportedBy, model)) {
            places.notOfTheModel.push_back(model + childPath);
        }
        places.found.insert(childPath);
        place(*child, *row, childPath, model, places);
    }
}

Places placesInGoldens() {
    Places places;
    forEachGolden([&places](const std::string& model, const XmlNode& root) {
        const bool isBackup = document::hasName(root, kBackup.name);
        if (isBackup) {
            place(root, kBackup, "", model, places);
        } else {
            place(root, kConfiguration, "/configuration", model, places);
        }
    });
    return places;
}

}  // namespace

TEST(DocumentTree, HasEveryElementOfTheGoldenDocumentsAtItsPlace) {
    const Places places = placesInGoldens();
    EXPECT_EQ(places.unknown, std::vector<std::string>());
    EXPECT_EQ(places.notOfTheModel, std::vector<std::string>());
}

TEST(DocumentTree, HasNoElementThatNoGoldenDocumentHas) {
    const Places places = placesInGoldens();
    forEachRow(kBackup, "", [&places](const std::string& path, const Element&) {
        EXPECT_TRUE(path == "/configuration" || places.found.contains(path)) << path;
    });
}

TEST(DocumentTree, HasTheElementsInTheOrderOfTheExport) {
    const std::function<void(const XmlNode&, const Element&)> expectOrder =
        [&expectOrder](const XmlNode& node, const Element& element) {
            std::vector<std::string> order;
            const auto add = [&order](Elements rows) {
                for (const Element& row : rows) {
                    order.emplace_back(row.name);
                }
            };
            add(element.children);
            const XmlNode* type = document::childNamed(node, "type");
            for (const ChildTable& table : element.childTables) {
                if (!table.inputType || (type != nullptr && static_cast<int>(*table.inputType) ==
                                                                document::numberOf(*type))) {
                    add(table.rows);
                }
            }
            auto next = order.begin();
            for (const XmlNode* child : elementsIn(node)) {
                if (element.kind != Kind::list) {
                    next = std::find(next, order.end(), std::string(child->name()));
                    if (next == order.end() && !element.childTables.empty()) {  // of a further row
                        next = std::find(order.begin() + static_cast<long>(element.children.size()),
                                         order.end(), std::string(child->name()));
                    }
                    ASSERT_NE(next, order.end()) << element.name << "/" << child->name();
                }
                const Element* row = childOf(element, child->name());
                ASSERT_NE(row, nullptr) << child->name();
                expectOrder(*child, *row);
            }
        };
    forEachGolden([&](const std::string& model, const XmlNode& root) {
        if (model != "RNB-K408") {  // its inputs do not tell their type
            expectOrder(root, kConfiguration);
        }
    });
}

TEST(DocumentTree, TellsLiveStateFromConfiguration) {
    std::set<std::string> liveState;
    forEachRow(kConfiguration, "", [&liveState](const std::string& path, const Element& row) {
        if (row.liveState) {
            liveState.insert(path.substr(path.rfind('/') + 1));
            EXPECT_EQ(row.take, Take::ignored) << path;
        }
        // Tables that are never written are those of the state database.
        EXPECT_TRUE(row.liveState || !row.column.exists() ||
                    row.column.table->operations != tarvodb::Operation::select)
            << path;
    });
    EXPECT_EQ(liveState, (std::set<std::string>{
                             "CAMSerialNumber", "CAMVersion", "CardSerialNumber", "CardRights",
                             "CardStatus", "swVersion", "InputVersionNIT", "InputVersionBAT",
                             "OutputVersionNIT", "OutputNITDate", "inputStatus", "signalQuality",
                             "serviceStatus", "decrytStatus", "transcodingStatus"}));
}

TEST(DocumentTree, SaysWhatIdentifiesTheEntriesOfAList) {
    std::vector<std::string> identities;
    forEachRow(kBackup, "", [&identities](const std::string& path, const Element& row) {
        if (row.identity) {
            identities.push_back(path.substr(path.rfind('/', path.rfind('/') - 1) + 1));
        }
    });
    EXPECT_EQ(identities,
              (std::vector<std::string>{
                  "homechannel/id", "dvbNetwork/id", "diseqc/id", "scrambling/name",
                  "preferredLanguages/language", "module/mac", "input/inputId", "output/outputId",
                  "service/outputId", "service/outputSid", "pidOrder/languageCode",
                  "pidOrder/streamId", "pidOrder/type", "cam/serialNumber"}));
}

TEST(DocumentTree, ListsHoldOneKindOfElement) {
    forEachRow(kBackup, "", [](const std::string& path, const Element& row) {
        if (row.kind == Kind::list) {
            ASSERT_EQ(row.children.size(), 1U) << path;
            EXPECT_TRUE(row.children[0].kind == Kind::entry || row.children[0].kind == Kind::leaf)
                << path;
        } else {
            for (const Element& child : row.children) {
                EXPECT_NE(child.kind, Kind::entry) << path;
            }
        }
    });
}

TEST(DocumentTree, UsesNoColumnForTwoElements) {
    std::set<std::string> seen;
    forEachRow(kBackup, "", [&seen](const std::string& path, const Element& row) {
        // Settings share a column, and tell their rows by the key; the loop is part of every tuner.
        if (row.column.exists() && std::string(row.name) != kRfLoop.name) {
            const std::string column = std::string(row.column.table->name) + "." +
                                       std::to_string(row.column.index) + "." +
                                       (row.key == nullptr ? "" : row.key);
            EXPECT_TRUE(seen.insert(column).second) << path << " " << column;
        }
    });
}

TEST(DocumentTree, GivesCodesOnlyToElementsThatHaveTexts) {
    forEachRow(kBackup, "", [](const std::string& path, const Element& row) {
        const bool takesCode = row.take == Take::code || row.take == Take::codeExactly ||
                               row.take == Take::codeOrNumber;
        EXPECT_TRUE(!takesCode || !row.texts.empty()) << path;
        EXPECT_TRUE(row.column.exists() || row.bit != 0 || row.take == Take::ignored ||
                    row.take == Take::children)
            << path;
    });
}

}  // namespace mapping
