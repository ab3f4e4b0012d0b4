// Reading measurements and taking their sample moments.
//
// The fields of a line are split by libcsv (quoted header names, a delimiter
// inside quotes); the lines themselves are cut here, so that every message
// names its line, a NUL or an endless line is caught before it is buffered,
// and a file of any size streams through in pieces.
#include "stats/m_SampleData.h"

#include "johnson/JohnsonDist.h"
#include "support/ErrorTrap.h"
#include "support/Format.h"

#include <csv.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace m_SampleData {

constexpr const char* kModule = "Pondera.m_SampleData";

namespace {

constexpr std::size_t kChunk = std::size_t{1} << 20;
// A field this long is neither a number nor a column title; refusing it keeps a
// line of one endless token from being buffered whole.
constexpr std::size_t kMaxField = std::size_t{1} << 20;
constexpr const char* kOutOfMemory = "not enough memory to read all the values";

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

// Optional spaces and sign, then a digit, or a decimal separator and a digit.
bool StartsLikeNumber(std::string_view field, char decimal) {
    std::size_t i = 0;
    while (i < field.size() && IsSpace(field[i]))
        ++i;
    if (i < field.size() && (field[i] == '+' || field[i] == '-')) ++i;
    auto digit = [&](std::size_t k) {
        return k < field.size() && field[k] >= '0' && field[k] <= '9';
    };
    if (digit(i)) return true;
    return i < field.size() && (field[i] == '.' || field[i] == decimal) && digit(i + 1);
}

std::string Quoted(std::string_view text) {
    return "\"" + support::Excerpt(text) + "\"";
}

// The first of tab, semicolon and (with a decimal point) comma in the first two
// lines with text; else runs of spaces.
char Delimiter(std::string_view head, char decimal) {
    bool tab = false, semicolon = false, comma = false;
    int lines = 0;
    for (std::size_t pos = 0; pos < head.size() && lines < 2;) {
        std::size_t end = head.find('\n', pos);
        if (end == std::string_view::npos) end = head.size();
        const std::string_view line = head.substr(pos, end - pos);
        pos = end + 1;
        if (std::all_of(line.begin(), line.end(), IsSpace)) continue;
        ++lines;
        tab = tab || line.find('\t') != std::string_view::npos;
        semicolon = semicolon || line.find(';') != std::string_view::npos;
        comma = comma || line.find(',') != std::string_view::npos;
    }
    if (tab) return '\t';
    if (semicolon) return ';';
    if (comma && decimal == '.') return ',';
    return ' ';
}

// Two bytes of which one is NUL and the other printable: a UTF-16 text.
bool LooksLikeUtf16(std::string_view start) {
    if (start.substr(0, 2) == "\xFF\xFE" || start.substr(0, 2) == "\xFE\xFF") return true;
    return start.size() >= 2 && (start[0] == '\0') != (start[1] == '\0');
}

// One pass over a text given in pieces.
class Reader {
  public:
    explicit Reader(const ReadOptions& options) : options_(options) { csv_init(&parser_, 0); }
    ~Reader() { csv_free(&parser_); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    // False once a problem has ended the read.
    bool Feed(std::string_view chunk);
    void Finish();
    void Refuse(std::string problem, long long line = 0);

    Parsed Out;

  private:
    static void OnField(void* text, std::size_t length, void* self);
    static void OnRow(int, void* self);
    void Row();
    void StartColumns(bool header);
    bool Parse(std::string_view segment);
    bool Plain(std::string_view line);
    void EndLine();
    bool Failed() const { return !Out.Problem.empty(); }

    ReadOptions options_;
    csv_parser parser_{};
    char delimiter_ = 0; // 0 until the first piece is seen
    std::uint64_t total_ = 0, lineBytes_ = 0;
    long long line_ = 1;
    std::vector<std::string> fields_; // of the row being read, reused
    std::size_t fieldCount_ = 0;
    std::size_t columns_ = 0; // 0 until the first row with text
    std::size_t chosen_ = 0;
    bool header_ = false;
    std::exception_ptr thrown_; // from a callback, rethrown outside libcsv's C frames
};

void Reader::Refuse(std::string problem, long long line) {
    std::vector<double>().swap(Out.Values);
    Out.Problem = std::move(problem);
    Out.Line = line > INT_MAX ? 0 : static_cast<int>(line);
}

void Reader::OnField(void* text, std::size_t length, void* self) {
    auto& r = *static_cast<Reader*>(self);
    if (r.Failed() || r.thrown_) return;
    // Runs of spaces separate fields: the empty ones between them are no fields.
    if (length == 0 && r.delimiter_ == ' ') return;
    try {
        if (r.fieldCount_ == r.fields_.size()) r.fields_.emplace_back();
        r.fields_[r.fieldCount_++].assign(static_cast<const char*>(text), length);
    } catch (...) {
        r.thrown_ = std::current_exception();
    }
}

void Reader::OnRow(int, void* self) {
    auto& r = *static_cast<Reader*>(self);
    if (!r.Failed() && !r.thrown_) {
        try {
            r.Row();
        } catch (...) {
            r.thrown_ = std::current_exception();
        }
    }
    r.fieldCount_ = 0;
}

void Reader::StartColumns(bool header) {
    columns_ = fieldCount_;
    header_ = header;
    for (std::size_t i = 0; i < columns_; ++i)
        Out.ColumnNames.push_back(header && !fields_[i].empty() ? fields_[i]
                                                                : std::to_string(i + 1));
    std::string list;
    for (std::size_t i = 0; i < columns_ && i < 12; ++i)
        list += (i ? ", " : "") + Quoted(Out.ColumnNames[i]);
    if (columns_ > 12) list += ", \u2026";
    const std::string& wanted = options_.Column;
    if (wanted.empty()) {
        if (columns_ > 1)
            return Refuse(std::to_string(columns_) + " columns (" + list + "): choose one");
        chosen_ = 0;
    } else {
        const auto named = std::find(Out.ColumnNames.begin(), Out.ColumnNames.end(), wanted);
        const bool digits =
            std::all_of(wanted.begin(), wanted.end(), [](char c) { return c >= '0' && c <= '9'; });
        if (header && named != Out.ColumnNames.end()) {
            chosen_ = static_cast<std::size_t>(named - Out.ColumnNames.begin());
        } else if (digits && wanted.size() < 10 && std::stoul(wanted) >= 1 &&
                   std::stoul(wanted) <= columns_) {
            chosen_ = std::stoul(wanted) - 1;
        } else {
            return Refuse("there is no column " + Quoted(wanted) + "; the columns are " + list);
        }
    }
    if (header || columns_ > 1) Out.Column = Out.ColumnNames[chosen_];
}

void Reader::Row() {
    while (fieldCount_ > 0 && fields_[fieldCount_ - 1].empty())
        --fieldCount_;
    if (fieldCount_ == 0) return; // a blank line, or only delimiters
    if (columns_ == 0) {
        const bool header = !StartsLikeNumber(fields_[0], options_.Decimal);
        StartColumns(header);
        if (header || Failed()) return;
    }
    auto where = [&] { return "line " + std::to_string(line_) + ": "; };
    if (fieldCount_ > columns_)
        return Refuse(where() + std::to_string(fieldCount_) + " fields where the " +
                          (header_ ? "header has " : "first line has ") + std::to_string(columns_),
                      line_);
    if (chosen_ >= fieldCount_ || fields_[chosen_].empty())
        return Refuse(where() + "no value in column " + Quoted(Out.ColumnNames[chosen_]), line_);
    const std::string& field = fields_[chosen_];
    const std::optional<double> v = support::ParseNumber(field, options_.Decimal);
    if (!v) return Refuse(where() + Quoted(field) + " is not a number", line_);
    Out.Values.push_back(*v);
}

bool Reader::Parse(std::string_view segment) {
    if (segment.empty()) return true;
    if (std::memchr(segment.data(), '\0', segment.size())) {
        Refuse("line " + std::to_string(line_) + ": a NUL byte; this is not a text file", line_);
        return false;
    }
    lineBytes_ += segment.size();
    if (lineBytes_ > kMaxInput) {
        Refuse("line " + std::to_string(line_) +
                   " is longer than 2 GiB (2^31 bytes), the most "
                   "that is read",
               line_);
        return false;
    }
    csv_parse(&parser_, segment.data(), segment.size(), OnField, OnRow, this);
    if (thrown_) std::rethrow_exception(thrown_);
    if (csv_error(&parser_) == CSV_ENOMEM) throw std::bad_alloc();
    if (parser_.entry_pos > kMaxField) {
        Refuse("line " + std::to_string(line_) + ": a field of more than 1 MiB is not a number",
               line_);
        return false;
    }
    return !Failed();
}

void Reader::EndLine() {
    csv_fini(&parser_, OnField, OnRow, this);
    if (thrown_) std::rethrow_exception(thrown_);
    fieldCount_ = 0;
    ++line_;
    lineBytes_ = 0;
}

bool Reader::Feed(std::string_view chunk) {
    if (Failed()) return false;
    if (delimiter_ == 0) {
        if (LooksLikeUtf16(chunk.substr(0, 2))) {
            Refuse("not UTF-8 text (UTF-16?)");
            return false;
        }
        if (chunk.substr(0, 3) == "\xEF\xBB\xBF") chunk.remove_prefix(3); // a byte-order mark
        delimiter_ = Delimiter(chunk.substr(0, 65536), options_.Decimal);
        csv_set_delim(&parser_, static_cast<unsigned char>(delimiter_));
    }
    total_ += chunk.size();
    if (total_ > kMaxInput) {
        Refuse("the input is larger than 2 GiB (2^31 bytes), the most that is read");
        return false;
    }
    while (true) {
        const std::size_t end = chunk.find('\n');
        if (end != std::string_view::npos && Plain(chunk.substr(0, end))) {
            chunk.remove_prefix(end + 1);
            continue;
        }
        if (!Parse(chunk.substr(0, end))) return false;
        if (end == std::string_view::npos) return true;
        EndLine();
        if (Failed()) return false;
        chunk.remove_prefix(end + 1);
    }
}

// A line that is one number and nothing else, in a one-column sample under
// way, is taken here, as the parser would take it, without the parser: a file
// of millions of lines is mostly these.
bool Reader::Plain(std::string_view line) {
    if (columns_ != 1 || lineBytes_ != 0) return false;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.empty() || line.size() > 64) return false;
    for (char c : line)
        if (!((c >= '0' && c <= '9') || c == '.' || c == '-' || c == '+' || c == 'e' || c == 'E' ||
              c == options_.Decimal))
            return false;
    const std::optional<double> v = support::ParseNumber(line, options_.Decimal);
    if (!v) return false; // the parser's way says what is wrong with it
    Out.Values.push_back(*v);
    ++line_;
    return true;
}

void Reader::Finish() {
    if (!Failed()) EndLine();
}

// The whole read under one guard: running out of memory is a problem to
// report, not an error to log.
template <class Body> Parsed Guarded(const ReadOptions& options, Body&& body) {
    Parsed out;
    support::Trap({kModule, "Read"}, [&] {
        try {
            Reader reader(options);
            body(reader);
            out = std::move(reader.Out);
        } catch (const std::bad_alloc&) {
            out = Parsed{};
            out.Problem = kOutOfMemory;
        }
    });
    return out;
}

std::string Shown(const std::string& path) {
    return path == "-" ? "standard input" : "\"" + support::Excerpt(path) + "\"";
}

// Opens a file, or takes standard input; -1 with the reason when it cannot be read.
int Open(const std::string& path, std::string& problem) {
    int fd = 0;
    if (path == "-") {
        if (fcntl(0, F_GETFD) == -1) {
            problem = "standard input is closed";
            return -1;
        }
    } else {
        fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0) {
            problem = "cannot read " + Shown(path) + ": " + std::strerror(errno);
            return -1;
        }
    }
    struct stat info {};
    if (fstat(fd, &info) == 0 && S_ISDIR(info.st_mode)) {
        if (fd != 0) ::close(fd);
        problem = Shown(path) + " is a folder, not a file";
        return -1;
    }
    return fd;
}

// Reads up to `size` bytes, retrying after a signal; -1 on a read error.
long ReadSome(int fd, char* buffer, std::size_t size) {
    while (true) {
        const ssize_t n = ::read(fd, buffer, size);
        if (n >= 0 || errno != EINTR) return static_cast<long>(n);
    }
}

} // namespace

Parsed Parse(std::string_view text, const ReadOptions& options) {
    return Guarded(options, [&](Reader& r) {
        if (r.Feed(text)) r.Finish();
    });
}

Parsed ReadFile(const std::string& path, const ReadOptions& options) {
    return Guarded(options, [&](Reader& r) {
        std::string problem;
        const int fd = Open(path, problem);
        if (fd < 0) return r.Refuse(problem);
        std::vector<char> buffer(kChunk);
        bool going = true;
        while (going) {
            const long n = ReadSome(fd, buffer.data(), buffer.size());
            if (n < 0) {
                r.Refuse("cannot read " + Shown(path) + ": " + std::strerror(errno));
                break;
            }
            if (n == 0) {
                r.Finish();
                break;
            }
            going = r.Feed(std::string_view(buffer.data(), static_cast<std::size_t>(n)));
        }
        if (fd != 0) ::close(fd);
    });
}

Head ReadHead(const std::string& path, std::size_t lines, std::size_t bytes) {
    Head head;
    support::Trap({kModule, __func__}, [&] {
        const int fd = Open(path, head.Problem);
        if (fd < 0) return;
        struct stat info {};
        if (fstat(fd, &info) == 0) head.Size = static_cast<std::uint64_t>(info.st_size);
        head.Text.resize(bytes);
        std::size_t have = 0;
        long n = 1;
        while (have < bytes && (n = ReadSome(fd, head.Text.data() + have, bytes - have)) > 0)
            have += static_cast<std::size_t>(n);
        if (n < 0) head.Problem = "cannot read " + Shown(path) + ": " + std::strerror(errno);
        if (fd != 0) ::close(fd);
        head.Text.resize(have);
        head.Whole = n == 0;
        // Whole lines only, and no more of them than asked for.
        std::size_t end = 0, count = 0;
        while (count < lines && end < head.Text.size()) {
            const std::size_t nl = head.Text.find('\n', end);
            if (nl == std::string::npos) {
                if (head.Whole) end = head.Text.size(), ++count;
                break;
            }
            end = nl + 1, ++count;
        }
        if (end < head.Text.size()) head.Whole = false;
        head.Text.resize(end);
    });
    return head;
}

std::string Describe(const std::vector<double>& values, Summary& out) {
    std::string problem = "The moments of these values cannot be computed.";
    support::Trap({kModule, __func__}, [&] {
        const std::size_t n = values.size();
        if (n < kMinValues) {
            problem = "At least " + std::to_string(kMinValues) + " values are needed; found " +
                      std::to_string(n) + ".";
            return;
        }
        const auto [low, high] = std::minmax_element(values.begin(), values.end());
        if (*low == *high) {
            problem =
                "All " + std::to_string(n) + " values are equal; a curve needs values that vary.";
            return;
        }
        Summary s;
        s.N = n;
        bool fault = true;
        JohnsonDist::MOMENT(values, s.Mean, s.StDev, s.Skewness, s.Kurtosis, fault);
        if (fault) return;
        out = s;
        problem.clear();
    });
    return problem;
}

} // namespace m_SampleData
