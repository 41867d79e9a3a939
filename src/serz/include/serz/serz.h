#pragma once
// The simulator's binary documents ("SERZ") to the converter's XML and back.
// Standard C++ only. Nothing here throws: every entry point returns a Status.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace serz {

enum class LineEnd { CrLf, Lf };

// Where a blob's bytes lie in a binary document.
struct BlobPlace {
    std::uint64_t offset = 0;
    std::uint32_t size = 0;
};

struct WriteOptions {
    LineEnd lineEnd = LineEnd::CrLf; // serz.exe writes CR LF
    int exponentDigits = 3;          // serz.exe: at least three digits; serz64.exe: two
    // Real documents nest a few dozen levels. Each level costs a tab on every line below it,
    // so a crafted document of deep nesting grows with the square of its depth.
    std::size_t maxDepth = 1024;
    // The most XML one document may give; 0 picks the default for the input's size
    // (xmlLimitFor). Real documents give 2 to 7 times their size.
    std::uint64_t maxXmlBytes = 0;
    // When set, blobs are not written out as hexadecimal: each d:blob element is left empty and
    // the place of its bytes in the binary is appended here, for readers that want the bytes
    // themselves (a texture's pixels) and not their text.
    std::vector<BlobPlace>* blobPlaces = nullptr;
};


// The XML one binary document of `binaryBytes` may give by default: 32 times its size, at least
// 256 MiB, at most 8 GiB.
std::uint64_t xmlLimitFor(std::uint64_t binaryBytes);

// The largest document file read whole (1 GiB); a larger one is refused before any byte of it
// is held in memory.
constexpr std::uint64_t kMaxDocumentBytes = std::uint64_t{1} << 30;

enum class FloatImport {
    Lossless,   // floats from d:alt_encoding when the text is what the writer would print for it
    Compatible, // floats always from the text, as the converter does
};

struct ReadOptions {
    FloatImport floats = FloatImport::Lossless;
};

struct Status {
    bool ok = true;
    std::string message;   // empty when ok
    std::uint64_t offset = 0; // byte offset into the input (binary input)
    std::uint64_t line = 0;   // 1-based line (XML input); 0 when not applicable

    explicit operator bool() const { return ok; }
    static Status success() { return {}; }
};

// In memory. Running out of memory is a failed Status too, not an exception.
Status decode(std::string_view binary, std::string& xml, const WriteOptions& options = {});
Status encode(std::string_view xml, std::string& binary, const ReadOptions& options = {});

// The bytes of a document file: only a regular file (a FIFO or a device would block or never
// end), at most `maxBytes` of it. On failure `bytes` is empty and the status names the file.
Status readDocument(const std::filesystem::path& file, std::string& bytes,
                    std::uint64_t maxBytes = kMaxDocumentBytes);

// A large document's bytes (a texture) without copying them into the program's memory: the
// file mapped read-only where the system can, else read whole. The program never truncates a
// document in place (its writes replace the file), so a mapping stays whole while it is used.
class DocumentBytes {
public:
    DocumentBytes() = default;
    DocumentBytes(DocumentBytes&& other) noexcept;
    DocumentBytes& operator=(DocumentBytes&& other) noexcept;
    ~DocumentBytes();
    std::string_view view() const { return {m_data, m_size}; }

private:
    friend Status readDocument(const std::filesystem::path&, DocumentBytes&, std::uint64_t);
    void release();
    const char* m_data = nullptr;
    std::size_t m_size = 0;
    bool m_mapped = false;
    std::unique_ptr<char[]> m_read;
};
Status readDocument(const std::filesystem::path& file, DocumentBytes& bytes,
                    std::uint64_t maxBytes = kMaxDocumentBytes);

// Appends the UTF-8 form of a code point (at most U+10FFFF).
void appendUtf8(std::string& out, char32_t cp);

} // namespace serz
