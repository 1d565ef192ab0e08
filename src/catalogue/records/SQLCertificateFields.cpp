// The fields of the current certificate.

#include <algorithm>
#include <cstring>
#include <exception>
#include <iterator>

#include "catalogue/records/RecordAccess.h"
#include "catalogue/records/RecordTable.h"
#include "catalogue/records/SQLCertificate.h"
#include "text/VelmarException.h"
#include "trace/UTrace.h"

// A missing field is common, so the reads throw no exception on the way to their failure line.

bool SQLCertificate::CanRead(const char* name) const {
    return table_ != nullptr && name != nullptr && *name != '\0';
}

const char* SQLCertificate::FindValue(const char* name) const {
    return CanRead(name) ? table_->FindValue(name) : nullptr;
}

std::vector<std::string> SQLCertificate::FindValues(const char* name) const {
    return CanRead(name) ? table_->FindValues(name) : std::vector<std::string>();
}

void SQLCertificate::GetFieldAsText(const std::string& name, std::string* value) {
    const char* const found = FindValue(name.c_str());
    if (found == nullptr) {
        UTrace::Error("GetFieldAsText failed, FieldName: %s", name.c_str());
        return;
    }
    *value = found;
}

void SQLCertificate::GetFieldAsText(const char* name, char* buffer, std::uint32_t size) {
    const bool hasRoom = buffer != nullptr && size > 0;
    if (hasRoom) {
        *buffer = '\0';
    }
    const char* const found = hasRoom ? FindValue(name) : nullptr;
    if (found == nullptr) {
        UTrace::Error("GetFieldAsText failed, FieldName: %s", name);
        return;
    }
    const std::size_t length = std::min<std::size_t>(std::strlen(found), size - 1);
    std::memcpy(buffer, found, length);
    buffer[length] = '\0';
}

std::int32_t SQLCertificate::GetFieldAsNumber(const char* name) {
    const char* const found = FindValue(name);
    if (found == nullptr) {
        UTrace::Error("GetFieldAsNumber failed, FieldName: %s", name);
        return 0;
    }
    return TextToInt(found);
}

void SQLCertificate::GetFieldAsVector(const std::string& name, std::vector<std::string>* values) {
    *values = FindValues(name.c_str());
    if (values->empty()) {
        UTrace::Error("GetFieldAsVector failed, FieldName: %s", name.c_str());
    }
}

std::uint32_t SQLCertificate::GetFieldMaxEnum(const char* name) {
    const std::vector<std::string> values = FindValues(name);
    if (values.empty()) {
        UTrace::Error("GetFieldMaxEnum failed, FieldName: %s", name);
    }
    return static_cast<std::uint32_t>(values.size());
}

std::uint32_t SQLCertificate::GetFieldValueAsEnum(const char* name, const char* value) {
    if (value != nullptr) {
        const std::vector<std::string> values = FindValues(name);
        const auto found = std::find_if(
            values.begin(), values.end(),
            [=](const std::string& candidate) { return EqualNoCase(candidate, value); });
        if (found != values.end()) {
            return static_cast<std::uint32_t>(found - values.begin() + 1);
        }
    }
    UTrace::Error("GetFieldValueAsEnum failed, FieldName: %s , FieldValue: %s", name, value);
    return 0;
}

void SQLCertificate::GetFieldEnumAsValueText(const std::string& name, std::int32_t enumValue,
                                             std::string* value) {
    const std::vector<std::string> values = FindValues(name.c_str());
    if (enumValue < 1 || static_cast<std::size_t>(enumValue) > values.size()) {
        UTrace::Error("GetFieldEnumAsValueText failed, FieldName: %s , FieldEnum: %d", name.c_str(),
                      enumValue);
        return;
    }
    *value = values[static_cast<std::size_t>(enumValue) - 1];
}

std::int32_t SQLCertificate::GetFieldEnumAsValueNumber(const char* name, std::int32_t enumValue) {
    if (!CanRead(name)) {
        UTrace::Error("GetFieldEnumAsValueNumber failed, FieldName: %s , FieldEnum: %d", name,
                      enumValue);
        return 0;
    }
    std::string value;
    GetFieldEnumAsValueText(name, enumValue, &value);
    return TextToInt(value);
}

void SQLCertificate::GetFieldVocabAsText(const std::string& name, std::string* text) {
    text->clear();
    const std::vector<std::string> values = FindValues(name.c_str());
    if (values.empty()) {
        UTrace::Error("GetFieldVocabAsText failed, FieldName: %s ", name.c_str());
        return;
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        *text += (i == 0 ? "" : ",") + values[i];
    }
}

void SQLCertificate::GetFieldVocabAsVector(const std::string& name,
                                           std::vector<std::string>* values) {
    if (!CanRead(name.c_str())) {
        UTrace::Error("GetFieldVocabAsVector failed, FieldName: %s ", name.c_str());
        return;
    }
    GetFieldAsVector(name, values);
    if (!values->empty()) {
        values->emplace(values->begin());
    }
}

std::uint8_t SQLCertificate::SetFieldAsText(const std::string& name, const std::string& value) {
    if (value.find('\0') != std::string::npos || name.find('\0') != std::string::npos) {
        UTrace::Error("SetFieldAsText failed, FieldName: %s , FieldValue: %s", name.c_str(),
                      value.c_str());
        return 0;
    }
    return SetFieldAsText(name.c_str(), value.c_str());
}

std::uint8_t SQLCertificate::SetFieldAsText(const char* name, const char* value) {
    try {
        if (!CanRead(name) || value == nullptr) {
            throw VelmarException(".\\SQLCertificate", __LINE__);
        }
        WriteField(name, value);
        return 1;
    } catch (const std::exception&) {
        UTrace::Error("SetFieldAsText failed, FieldName: %s , FieldValue: %s", name, value);
        return 0;
    }
}

void SQLCertificate::WriteField(const std::string& name, const std::string& value) {
    const char* const present = table_->FindValue(name.c_str());
    RecordAccess(*db_).Edit([&](SQLite3WrapperDB& db) {
        if (present == nullptr || *present == '\0') {
            db.Execute(RecordTable::InsertStatement(key_, name, value));
        } else {
            RecordTable::UpdateRows(db, key_, name, value);
        }
    });
}

std::string ReadField(SQLCertificate& store, const std::string& name) {
    std::string value;
    store.GetFieldAsText(name, &value);
    return value;
}

void ReadFieldList(SQLCertificate& store, const std::string& name, Utf8StringList* values) {
    std::vector<std::string> narrow;
    store.GetFieldAsVector(name, &narrow);
    values->clear();
    std::transform(narrow.begin(), narrow.end(), std::back_inserter(*values), NarrowToUtf8);
}
