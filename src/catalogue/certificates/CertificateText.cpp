#include "catalogue/certificates/CertificateText.h"

#include <cstddef>
#include <utility>

namespace {

// One walk over the text. A token is a name or value whose beginning has been met; it is open until
// what ends it.
class Walk {
  public:
    explicit Walk(const std::string& text) : text_(text) {}

    std::vector<CertificateField> Run() {
        while (place_ < text_.size()) {
            Step();
            ++place_;
        }
        place_ = text_.size();
        TakeField();
        return std::move(fields_);
    }

  private:
    static constexpr std::size_t kClosed = std::string::npos;

    void Step() {
        switch (text_[place_]) {
            case '\n':
            case '\r':
                TakeField();
                Close();
                name_.clear();
                break;
            case ',':
                TakeField();
                Close();
                break;
            case '=':
                if (name_.empty() && start_ != kClosed) {
                    name_ = Token();
                }
                Close();
                break;
            case ' ':
                break;
            case '"':
                TakeQuoted();
                break;
            default:
                if (start_ == kClosed) {
                    start_ = place_;
                }
                break;
        }
    }

    // Ends the field at this place, if there is a whole one.
    void TakeField() {
        if (value_.empty() && start_ != kClosed) {
            value_ = Token();
        }
        if (!name_.empty() && !value_.empty()) {
            fields_.push_back({name_, value_});
        }
    }

    // Goes on to the closing quote, or, without one, to the end of the text.
    void TakeQuoted() {
        const std::size_t opening = place_;
        place_ = text_.find('"', opening + 1);
        if (place_ == std::string::npos) {
            place_ = text_.size();
            return;
        }
        const std::size_t from = start_ != kClosed ? start_ : opening + 1;
        std::string& taker = name_.empty() ? name_ : value_;
        if (taker.empty()) {
            taker = text_.substr(from, place_ - from);
        }
    }

    // The open token up to this place, without the blanks at its end.
    std::string Token() const {
        std::size_t end = place_;
        while (end > start_ && text_[end - 1] == ' ') {
            --end;
        }
        return text_.substr(start_, end - start_);
    }

    void Close() {
        value_.clear();
        start_ = kClosed;
    }

    const std::string& text_;
    std::size_t place_ = 0;
    std::size_t start_ = kClosed;
    std::string name_;
    std::string value_;
    std::vector<CertificateField> fields_;
};

}  // namespace

std::vector<CertificateField> ParseCertificateText(const std::string& text) {
    return Walk(text).Run();
}
