// The editor's XML tree: any text is parsed into a tree or refused, and the tree is freed,
// however deep it nests.
#include "fuzzinput.h"
#include "velmora/core/xmltree.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velmora::XmlTree tree;
    if (tree.parse(fuzz::text(data, size))) {
        if (tree.size() && !tree.document())
            __builtin_trap();
        (void)velmora::findInTree(tree, 0, QStringLiteral("a"), velmora::TreeSearchKind::Shown);
    } else if (!tree.empty()) {
        __builtin_trap(); // a refused text leaves no tree
    }
    return 0;
}
