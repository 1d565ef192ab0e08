// Numbered texts: every wording of the library that can reach a user.
//
// A text has a number and its embedded English, which a translation of the language provider may
// replace. The library speaks English unless a host calls LoadLanguage.
//
// Threads: the registry changes only while the library loads and unloads. No text may be used while
// a language is loaded.
#pragma once

#include <array>
#include <iosfwd>
#include <map>
#include <utility>

#include "text/StringConversions.h"

struct LanguageInfo {
    char code[4];      // three letters and a NUL; the name of the string file
    const char* name;  // English
};

// Index of the language that means: no string file, the embedded English.
inline constexpr int kEmbeddedEnglish = 16;

// Where translations come from.
class LanguageProvider_IF {
  public:
    // Index of the current language.
    virtual int GetLanguage() = 0;

    // The language's row; null for an index that has none.
    virtual const LanguageInfo* GetLanguageInfo(int index) = 0;

    // The translation of a text; empty where there is none.
    virtual Utf8String GetString(long id) = 0;

    // Reads the translations of a language from its string file in `folder` (UTF-8).
    virtual void LoadLanguage(int index, const Utf8String& folder) = 0;

  protected:
    ~LanguageProvider_IF() = default;
};

class VelmarText {
  public:
    class LanguageImpl;

    // A text without a number, not registered. `text` is UTF-8 and must outlive the object; null
    // counts as empty.
    explicit VelmarText(const char* text)
        : id_(0), text_(text != nullptr ? text : ""), next_(this) {}

    // A registered text. The newest of several with one number is the one that is found.
    VelmarText(long id, const char* text);

    // A copy is not registered.
    VelmarText(const VelmarText& other) : id_(other.id_), text_(other.text_), next_(this) {}
    VelmarText& operator=(const VelmarText&) = delete;
    virtual ~VelmarText();

    virtual long GetId() const { return id_; }

    // The wording with its placeholders %0, %1 and so on filled in, in rising order from the start
    // to the end: one before the last filled in, without an argument or in an argument stays.
    virtual Utf8String Format(const Utf8StringList& arguments) const;

    // The wording: the provider's translation, else the embedded English.
    virtual Utf8String GetText() const;

    // The registered text of this number, or null.
    static const VelmarText* Find(long id);

    // Lists all registered texts with their translations, in UTF-8 with a byte order mark.
    static void Dump(std::ostream& stream);

    static LanguageProvider_IF& GetProvider();

    // The provider must outlive its use; null restores the library's own.
    static void SetProvider(LanguageProvider_IF* provider);

    static int GetLanguage() { return GetProvider().GetLanguage(); }
    static const LanguageInfo* GetLanguageInfo(int index) {
        return GetProvider().GetLanguageInfo(index);
    }
    static void LoadLanguage(int index, const Utf8String& folder) {
        GetProvider().LoadLanguage(index, folder);
    }

  private:
    bool IsRegistered() const { return next_ != this; }

    long id_;
    const char* text_;
    mutable VelmarText* next_;  // the object itself when it is not registered

    static VelmarText* first_;
};

// A text with its arguments, %0 the first; push_back adds one.
class VelmarTextArgs : public VelmarText, public Utf8StringList {
  public:
    explicit VelmarTextArgs(const VelmarText& text, Utf8StringList arguments = {})
        : VelmarText(text), Utf8StringList(std::move(arguments)) {}
    ~VelmarTextArgs() override = default;

    Utf8String Format(const Utf8StringList& arguments) const override {
        return VelmarText::Format(arguments);
    }

    // The wording filled in with the object's own arguments.
    Utf8String GetText() const override { return VelmarText::Format(*this); }
};

// The library's own provider: the 17 languages, and the translations of one string file.
class VelmarText::LanguageImpl final : public LanguageProvider_IF {
  public:
    static LanguageImpl& Instance();

    int GetLanguage() override { return language_; }
    const LanguageInfo* GetLanguageInfo(int index) override;
    Utf8String GetString(long id) override;

    // Does nothing for the current language. Without a file or a row selects the embedded English.
    void LoadLanguage(int index, const Utf8String& folder) override;

  private:
    int language_ = kEmbeddedEnglish;
    std::map<long, Utf8String> strings_;
};
