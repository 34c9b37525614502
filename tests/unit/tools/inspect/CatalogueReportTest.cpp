#include "CatalogueReport.h"

#include <gtest/gtest.h>

namespace {

using Inspect::catalogueText;
using Inspect::Json;

TEST(CatalogueReport, AlignsPropertiesFieldsAndValues) {
    const Json catalogue = Json::parse(R"({
        "OneProvider": {
            "short": "/a\u001b",
            "muchLonger": "",
            "record": {"name": "x", "inner": {"deeply": {"nested": "/y"}}, "none": null},
            "aListWithALongName": ["/first", "/second"],
            "recordList": [{"label": "l"}, {"label": ""}],
            "last": null},
        "Other": {"a": "b"},
        "Records": {"only": {"longer": "1", "b": "2"}, "more": {"c": "3"}}})");
    EXPECT_EQ(catalogueText(catalogue),
              "OneProvider\n"
              "  short       /a\\x1b\n"
              "  muchLonger  \"\"\n"
              "  record\n"
              "    name                 x\n"
              "    inner.deeply.nested  /y\n"
              "    none                 (none)\n"
              "  aListWithALongName\n"
              "    1                    /first\n"
              "    2                    /second\n"
              "  recordList\n"
              "    1.label              l\n"
              "    2.label              \"\"\n"
              "  last        (none)\n"
              "\n"
              "Other\n"
              "  a  b\n"
              "\n"
              "Records\n"
              "  only\n"
              "    longer  1\n"
              "    b       2\n"
              "  more\n"
              "    c       3\n");
    EXPECT_EQ(catalogueText(Json::object()), "");
}

}  // namespace
