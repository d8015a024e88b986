// Prints a schema of the program's documents, or their manual page: document_schema export, import
// or manual. scripts/document-schema writes all of them to their places.
#include <iostream>
#include <string>
#include <string_view>

#include "schema/export_schema.h"
#include "schema/import_schema.h"
#include "schema/manual.h"

namespace {

struct Output {
    std::string_view name;
    std::string (*make)();
};

constexpr Output kOutputs[] = {
    {"export", schema::exportSchema},
    {"import", schema::importSchema},
    {"manual", schema::documentManual},
};

}  // namespace

int main(int argc, char** argv) {
    const std::string_view wanted = argc == 2 ? argv[1] : "";
    for (const Output& output : kOutputs) {
        if (output.name == wanted) {
            std::cout << output.make();
            return std::cout.flush() ? 0 : 1;
        }
    }
    std::cerr << "usage: document_schema export | import | manual\n";
    return 2;
}
