#include "gik/Document.h"

#include <pthread.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <tinyxml.h>
#include <vector>

#include "gik/Text.h"
#include "gik/XmlDepth.h"

namespace gik {

namespace {

// Stack per element level that tinyxml may use while parsing or destroying,
// with a generous margin (measured at well under 1 KiB on x86-64, more with
// sanitizers).
constexpr size_t kStackPerLevel = 4096;
constexpr size_t kStackBase = 1u << 20;
// Left free below a parse on the caller's own stack: the guard page, and
// whatever runs from there (the allocator, the sanitizers).
constexpr size_t kStackMargin = 256u << 10;

struct tParseJob {
    const char* text;
    TiXmlDocument* document;
    std::string error;
};

void* ParseOnStack(void* aJob) {
    auto* job = static_cast<tParseJob*>(aJob);
    try {
        auto* document = new TiXmlDocument();
        // No rows and columns: nothing reads them, and counting them costs a
        // tenth of the parse.
        document->SetTabSize(0);
        document->Parse(job->text, nullptr, TIXML_DEFAULT_ENCODING);
        // The measure before the parse bounds what tinyxml built (the
        // document fuzz target holds it to that), so the tree needs no walk.
        if (document->Error()) {
            job->error = document->ErrorDesc() ? document->ErrorDesc() : "unknown error";
            delete document;
        } else {
            job->document = document;
        }
    } catch (...) {
        job->error = "out of memory";
    }
    return nullptr;
}

// What is left of the calling thread's stack below this frame; 0 when
// unknown.
size_t StackLeft() {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
    void* low = nullptr;
    size_t size = 0;
    int got = pthread_attr_getstack(&attributes, &low, &size);
    pthread_attr_destroy(&attributes);
    auto here = reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
    auto bottom = reinterpret_cast<uintptr_t>(low);
    return got == 0 && here > bottom ? here - bottom : 0;
}

// A thread with a stack of aStack bytes parses; false when none can be made.
bool ParseOnThread(tParseJob* aJob, size_t aStack) {
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return false;
    pthread_attr_setstacksize(&attributes, aStack);
    pthread_t thread;
    int made = pthread_create(&thread, &attributes, &ParseOnStack, aJob);
    pthread_attr_destroy(&attributes);
    if (made != 0) return false;
    pthread_join(thread, nullptr);
    return true;
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
        if (fseek(file, 0, SEEK_END) == 0) {
            long size = ftell(file);
            if (size > 0) aText.reserve(static_cast<size_t>(size) + kPadding);
            rewind(file);
        }
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
    // As tinyxml's own file loading: line ends become "\n", in place.
    size_t to = 0;
    for (size_t from = 0; from < aText.size(); ++from) {
        char c = aText[from];
        if (c == '\r') {
            c = '\n';
            if (from + 1 < aText.size() && aText[from + 1] == '\n') ++from;
        }
        aText[to++] = c;
    }
    aText.resize(to);
    return true;
}

u4 sDocument::Nesting(const TiXmlNode* aRoot) {
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

size_t sDocument::StackFor(const char* aText, size_t aLength) {
    u4 depth = sXmlDepth::Measure(aText, aText ? strnlen(aText, aLength) : 0, kMaxNesting);
    return depth > kMaxNesting ? 0 : kStackBase + depth * kStackPerLevel;
}

i4 sDocument::Parse(std::string& aText, TiXmlDocument*& aDocument, std::string& aError) {
    aDocument = nullptr;
    size_t length = strnlen(aText.data(), aText.size());
    size_t stack = StackFor(aText.data(), length);
    if (stack == 0) {
        aError = "elements nested too deeply";
        return kUnacceptable;
    }
    // Zero bytes after the text: tinyxml steps over a multi-byte character
    // by its lead byte's length, so a character cut off at the very end
    // would lead it past the terminator.
    try {
        aText.resize(length);
        aText.append(kPadding, '\0');
    } catch (...) {
        aError = "out of memory";
        return kNoMemory;
    }
    tParseJob job{aText.c_str(), nullptr, std::string()};
    if (StackLeft() >= stack + kStackMargin) {
        ParseOnStack(&job);
    } else if (!ParseOnThread(&job, stack)) {
        aError = "no thread for the parser";
        return kNoMemory;
    }
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
