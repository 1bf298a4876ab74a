#include "gik/Document.h"

#include <pthread.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <random>
#include <tinyxml.h>
#include <vector>

#include "gik/Text.h"

namespace gik {

namespace {

// Stack per element level that tinyxml may use while parsing or destroying,
// with a generous margin (measured at well under 1 KiB on x86-64, more with
// sanitizers).
constexpr size_t kStackPerLevel = 4096;
constexpr size_t kStackBase = 1u << 20;
constexpr size_t kStackCap = size_t(1) << 32;
// Zero bytes after the text: tinyxml steps over a multi-byte character by
// its lead byte's length, so a character cut off at the very end would lead
// it past the terminator.
constexpr size_t kPadding = 16;

inline bool StartsWith(const char* aAt, const char* aEnd, const char* aPrefix) {
    size_t n = strlen(aPrefix);
    return static_cast<size_t>(aEnd - aAt) >= n && memcmp(aAt, aPrefix, n) == 0;
}

// What tinyxml takes for the first character of an element's name.
inline bool IsNameStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           static_cast<u1>(c) >= 0x7F;
}

// Past the first aClose at or after aAt, or aEnd.
const char* Past(const char* aAt, const char* aEnd, const char* aClose) {
    size_t n = strlen(aClose);
    for (; static_cast<size_t>(aEnd - aAt) >= n; ++aAt)
        if (memcmp(aAt, aClose, n) == 0) return aAt + n;
    return aEnd;
}

} // namespace

u4 sDocument::Measure(const char* aText, size_t aLength, u4 aLimit) {
    const char* p = aText;
    const char* end = aText + aLength;
    u4 depth = 0, deepest = 0;
    while (p < end) {
        const char* open = static_cast<const char*>(memchr(p, '<', static_cast<size_t>(end - p)));
        if (!open) break;
        p = open + 1;
        if (StartsWith(open, end, "<!--")) {
            p = Past(open + 4, end, "-->");
        } else if (StartsWith(open, end, "<![CDATA[")) {
            p = Past(open + 9, end, "]]>");
        } else if (StartsWith(open, end, "<!") || StartsWith(open, end, "<?")) {
            p = Past(p, end, ">");
        } else if (StartsWith(open, end, "</")) {
            if (depth > 0) --depth;
            p = Past(p, end, ">");
        } else if (p < end && IsNameStart(*p)) {
            // A start tag; its quoted values may hold any character, "/>"
            // ends it empty.
            if (++depth > deepest && (deepest = depth) > aLimit) return deepest;
            while (p < end && *p != '>') {
                if (*p == '"' || *p == '\'') {
                    const char* q = static_cast<const char*>(
                        memchr(p + 1, *p, static_cast<size_t>(end - p - 1)));
                    p = q ? q + 1 : end;
                } else if (*p == '/' && p + 1 < end && p[1] == '>') {
                    --depth;
                    break;
                } else {
                    ++p;
                }
            }
        } else {
            p = Past(p, end, ">"); // tinyxml's "unknown" node
        }
    }
    return deepest;
}

namespace {

// The deepest element nesting of a parsed tree, walked without recursion.
u4 Nesting(const TiXmlNode* aRoot) {
    u4 deepest = 0;
    std::vector<std::pair<const TiXmlNode*, u4>> stack{{aRoot, 0}};
    while (!stack.empty()) {
        auto [node, depth] = stack.back();
        stack.pop_back();
        if (depth > deepest) deepest = depth;
        for (const TiXmlElement* child = node->FirstChildElement(); child;
             child = child->NextSiblingElement())
            stack.emplace_back(child, depth + 1);
    }
    return deepest;
}

struct tParseJob {
    const char* text;
    TiXmlDocument* document;
    std::string error;
};

void* ParseOnStack(void* aJob) {
    auto* job = static_cast<tParseJob*>(aJob);
    try {
        auto* document = new TiXmlDocument();
        document->Parse(job->text, nullptr, TIXML_DEFAULT_ENCODING);
        if (document->Error()) {
            job->error = document->ErrorDesc() ? document->ErrorDesc() : "unknown error";
            delete document;
        } else if (Nesting(document) > sDocument::kMaxNesting) {
            job->error = "elements nested too deeply";
            delete document; // on this stack, which is deep enough for it
        } else {
            job->document = document;
        }
    } catch (...) {
        job->error = "out of memory";
    }
    return nullptr;
}

std::string Trimmed(const char* aText) {
    if (!aText) return std::string();
    const char* b = aText;
    while (*b && sText::IsSpace(*b))
        ++b;
    const char* e = b + strlen(b);
    while (e > b && sText::IsSpace(e[-1]))
        --e;
    return std::string(b, e);
}

// The comment for a new group: aBase, or aBase_2, aBase_3... while a "Group"
// child of the description already carries it.
std::string GroupComment(TiXmlElement* aDescription, const char* aBase) {
    std::string comment = aBase;
    for (unsigned long counter = 2;; ++counter) {
        bool taken = false;
        for (TiXmlElement* g = aDescription->FirstChildElement("Group"); g;
             g = g->NextSiblingElement("Group")) {
            const char* c = g->Attribute("Comment");
            if (c && comment == c) {
                taken = true;
                break;
            }
        }
        if (!taken) return comment;
        comment = std::string(aBase) + "_" + std::to_string(counter);
    }
}

// Every register element under aDescription, through "Group" and
// "RegisterDescription", in document order.
std::vector<TiXmlElement*> RegisterElements(TiXmlElement* aDescription) {
    std::vector<TiXmlElement*> found;
    // Each entry is the next child to look at on one level.
    std::vector<TiXmlElement*> stack;
    stack.push_back(aDescription->FirstChildElement());
    while (!stack.empty()) {
        TiXmlElement* c = stack.back();
        if (!c) {
            stack.pop_back();
            continue;
        }
        stack.back() = c->NextSiblingElement();
        const char* v = c->Value();
        if (strcmp(v, "Group") == 0 || strcmp(v, "RegisterDescription") == 0)
            stack.push_back(c->FirstChildElement());
        else if (sDocument::IsRegisterElement(v))
            found.push_back(c);
    }
    return found;
}

std::string RandomName() {
    thread_local std::mt19937_64 generator{std::random_device{}()};
    std::string name = "GeneratedNode_";
    char byte[3];
    for (int i = 0; i < 16; ++i) {
        snprintf(byte, sizeof(byte), "%02X", static_cast<unsigned>(generator() & 0xFF));
        name += byte;
    }
    return name;
}

// An "Address" text as a decimal text: "0x" or "0X" and hexadecimal digits,
// or decimal digits only.
bool AddressText(const std::string& aText, std::string& aDecimal) {
    if (aText.size() >= 2 && aText[0] == '0' && (aText[1] == 'x' || aText[1] == 'X')) {
        if (aText.size() == 2 || aText.size() > 18) return false;
        u8 v = 0;
        for (size_t i = 2; i < aText.size(); ++i) {
            char c = aText[i];
            u4 d;
            if (c >= '0' && c <= '9')
                d = static_cast<u4>(c - '0');
            else if (c >= 'a' && c <= 'f')
                d = static_cast<u4>(c - 'a' + 10);
            else if (c >= 'A' && c <= 'F')
                d = static_cast<u4>(c - 'A' + 10);
            else
                return false;
            v = v * 16 + d;
        }
        char text[24];
        snprintf(text, sizeof(text), "%" PRIu64, v);
        aDecimal = text;
        return true;
    }
    if (aText.empty()) return false;
    for (char c : aText)
        if (c < '0' || c > '9') return false;
    aDecimal = aText;
    return true;
}

std::vector<TiXmlElement*> Descriptions(TiXmlDocument* aDocument) {
    std::vector<TiXmlElement*> all;
    for (TiXmlElement* d = aDocument->FirstChildElement("RegisterDescription"); d;
         d = d->NextSiblingElement("RegisterDescription"))
        all.push_back(d);
    return all;
}

} // namespace

bool sDocument::IsRegisterElement(const char* aName) {
    return strcmp(aName, "Register") == 0 || strcmp(aName, "IntReg") == 0 ||
           strcmp(aName, "FloatReg") == 0 || strcmp(aName, "StructReg") == 0 ||
           strcmp(aName, "MaskedIntReg") == 0;
}

bool sDocument::ReadFile(const char* aPath, std::string& aText) {
    if (!aPath) return false;
    FILE* file = fopen(aPath, "rb");
    if (!file) return false;
    bool ok = true;
    try {
        char buffer[65536];
        size_t n;
        while ((n = fread(buffer, 1, sizeof(buffer), file)) > 0)
            aText.append(buffer, n);
        if (ferror(file)) ok = false;
    } catch (...) {
        ok = false;
    }
    fclose(file);
    if (!ok) return false;
    // As tinyxml's own file loading: line ends become "\n".
    std::string text;
    try {
        text.reserve(aText.size());
        for (size_t i = 0; i < aText.size(); ++i) {
            char c = aText[i];
            if (c == '\r') {
                text += '\n';
                if (i + 1 < aText.size() && aText[i + 1] == '\n') ++i;
            } else {
                text += c;
            }
        }
    } catch (...) {
        return false;
    }
    aText.swap(text);
    return true;
}

i4 sDocument::Parse(const char* aText, size_t aLength, TiXmlDocument*& aDocument,
                    std::string& aError) {
    aDocument = nullptr;
    size_t length = aText ? strnlen(aText, aLength) : 0;
    if (Measure(aText, length, kMaxNesting) > kMaxNesting) {
        aError = "elements nested too deeply";
        return kUnacceptable;
    }
    std::string text;
    size_t opens = 0;
    try {
        text.reserve(length + kPadding);
        text.assign(aText ? aText : "", length);
        text.append(kPadding, '\0');
        for (size_t i = 0; i < length; ++i)
            if (text[i] == '<') ++opens;
    } catch (...) {
        aError = "out of memory";
        return kNoMemory;
    }
    // Each element level needs a "<" of its own: that bounds the stack.
    size_t stack = kStackBase + opens * kStackPerLevel;
    if (stack > kStackCap) {
        aError = "document too large";
        return kUnacceptable;
    }
    tParseJob job{text.c_str(), nullptr, std::string()};
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) {
        aError = "no thread for the parser";
        return kNoMemory;
    }
    pthread_attr_setstacksize(&attributes, stack);
    pthread_t thread;
    int made = pthread_create(&thread, &attributes, &ParseOnStack, &job);
    pthread_attr_destroy(&attributes);
    if (made != 0) {
        aError = "no thread for the parser";
        return kNoMemory;
    }
    pthread_join(thread, nullptr);
    if (!job.document) {
        aError = job.error;
        return kUnacceptable;
    }
    aDocument = job.document;
    return kOk;
}

i4 sDocument::ExpandEmbedded(TiXmlDocument* aDocument, std::string& aError) {
    for (TiXmlElement* description : Descriptions(aDocument)) {
        auto* group = new TiXmlElement("Group");
        group->SetAttribute("Comment", GroupComment(description, "EmbeddedIntSwissKnifes").c_str());
        bool filled = false;
        for (TiXmlElement* reg : RegisterElements(description)) {
            TiXmlElement* knife = reg->FirstChildElement("IntSwissKnife");
            while (knife) {
                TiXmlElement* next = knife->NextSiblingElement("IntSwissKnife");
                std::string name = Trimmed(knife->Attribute("Name"));
                if (name.empty()) {
                    delete group;
                    aError = "embedded IntSwissKnife without a name";
                    return kUnacceptable;
                }
                TiXmlNode* copy = knife->Clone();
                if (!copy || !group->LinkEndChild(copy)) {
                    delete group;
                    aError = "cannot move an embedded IntSwissKnife";
                    return kRewriteFailed;
                }
                filled = true;
                TiXmlElement address("pAddress");
                address.LinkEndChild(new TiXmlText(name.c_str()));
                if (!reg->ReplaceChild(knife, address)) {
                    delete group;
                    aError = "cannot replace an embedded IntSwissKnife";
                    return kRewriteFailed;
                }
                knife = next;
            }
        }
        if (!filled) {
            delete group;
        } else if (!description->LinkEndChild(group)) {
            aError = "cannot add a group";
            return kRewriteFailed;
        }
    }
    return kOk;
}

i4 sDocument::ExpandAddresses(TiXmlDocument* aDocument, std::string& aError) {
    for (TiXmlElement* description : Descriptions(aDocument)) {
        auto* group = new TiXmlElement("Group");
        group->SetAttribute("Comment", GroupComment(description, "AddressSwissKnifes").c_str());
        bool filled = false;
        for (TiXmlElement* reg : RegisterElements(description)) {
            std::string name = RandomName();
            auto* knife = new TiXmlElement("IntSwissKnife");
            knife->SetAttribute("Name", name.c_str());
            std::string formula;
            u4 count = 0;
            TiXmlElement* last = nullptr;
            for (TiXmlElement* c = reg->FirstChildElement(); c; c = c->NextSiblingElement()) {
                const char* v = c->Value();
                std::string term;
                if (strcmp(v, "Address") == 0) {
                    if (!AddressText(Trimmed(c->GetText()), term)) {
                        delete knife;
                        delete group;
                        aError = "unreadable Address";
                        return kUnacceptable;
                    }
                } else if (strcmp(v, "pAddress") == 0) {
                    std::string node = c->GetText() ? c->GetText() : "";
                    std::string upper = node;
                    for (char& ch : upper)
                        if (ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 'a' + 'A');
                    auto* variable = new TiXmlElement("pVariable");
                    variable->SetAttribute("Name", upper.c_str());
                    variable->LinkEndChild(new TiXmlText(node.c_str()));
                    knife->LinkEndChild(variable);
                    term = upper;
                } else {
                    continue;
                }
                if (!formula.empty()) formula += " + ";
                formula += term;
                ++count;
                last = c;
            }
            if (count <= 1) {
                delete knife;
                continue;
            }
            TiXmlElement* after = last->NextSiblingElement();
            for (TiXmlElement* c = reg->FirstChildElement(); c;) {
                TiXmlElement* next = c->NextSiblingElement();
                if (strcmp(c->Value(), "Address") == 0 || strcmp(c->Value(), "pAddress") == 0)
                    reg->RemoveChild(c);
                c = next;
            }
            auto* text = new TiXmlElement("Formula");
            text->LinkEndChild(new TiXmlText(formula.c_str()));
            knife->LinkEndChild(text);
            if (!group->LinkEndChild(knife)) {
                delete group;
                aError = "cannot add a generated IntSwissKnife";
                return kRewriteFailed;
            }
            filled = true;
            TiXmlElement address("pAddress");
            address.LinkEndChild(new TiXmlText(name.c_str()));
            TiXmlNode* placed =
                after ? reg->InsertBeforeChild(after, address) : reg->InsertEndChild(address);
            if (!placed) {
                delete group;
                aError = "cannot place a generated pAddress";
                return kRewriteFailed;
            }
        }
        if (!filled) {
            delete group;
        } else if (!description->LinkEndChild(group)) {
            aError = "cannot add a group";
            return kRewriteFailed;
        }
    }
    return kOk;
}

} // namespace gik
