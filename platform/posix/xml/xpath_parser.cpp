#include <libxml/chvalid.h>

#include <algorithm>
#include <charconv>
#include <iterator>

#include "platform/posix/xml/xpath.h"

namespace platform::xpath {

namespace {

constexpr int kMaxDepth = 100;

constexpr std::wstring_view kXmlUri = L"http://www.w3.org/XML/1998/namespace";

struct AxisName {
  std::wstring_view name;
  Axis axis;
};
constexpr AxisName kAxes[] = {
    {L"ancestor", Axis::kAncestor},
    {L"ancestor-or-self", Axis::kAncestorOrSelf},
    {L"attribute", Axis::kAttribute},
    {L"child", Axis::kChild},
    {L"descendant", Axis::kDescendant},
    {L"descendant-or-self", Axis::kDescendantOrSelf},
    {L"following", Axis::kFollowing},
    {L"following-sibling", Axis::kFollowingSibling},
    {L"namespace", Axis::kNamespace},
    {L"parent", Axis::kParent},
    {L"preceding", Axis::kPreceding},
    {L"preceding-sibling", Axis::kPrecedingSibling},
    {L"self", Axis::kSelf},
};

struct NodeTypeName {
  std::wstring_view name;
  NodeTest::Kind kind;
};
constexpr NodeTypeName kNodeTypes[] = {
    {L"comment", NodeTest::Kind::kComment},
    {L"node", NodeTest::Kind::kNode},
    {L"processing-instruction", NodeTest::Kind::kInstruction},
    {L"text", NodeTest::Kind::kText},
};

constexpr std::size_t kAnyNumber = static_cast<std::size_t>(-1);

struct FunctionName {
  std::wstring_view name;
  Function function;
  std::size_t fewest;  // arguments
  std::size_t most;
};
constexpr FunctionName kFunctions[] = {
    {L"boolean", Function::kBoolean, 1, 1},
    {L"ceiling", Function::kCeiling, 1, 1},
    {L"concat", Function::kConcat, 2, kAnyNumber},
    {L"contains", Function::kContains, 2, 2},
    {L"count", Function::kCount, 1, 1},
    {L"false", Function::kFalse, 0, 0},
    {L"floor", Function::kFloor, 1, 1},
    {L"id", Function::kId, 1, 1},
    {L"lang", Function::kLang, 1, 1},
    {L"last", Function::kLast, 0, 0},
    {L"local-name", Function::kLocalName, 0, 1},
    {L"name", Function::kName, 0, 1},
    {L"namespace-uri", Function::kNamespaceUri, 0, 1},
    {L"normalize-space", Function::kNormalizeSpace, 0, 1},
    {L"not", Function::kNot, 1, 1},
    {L"number", Function::kNumber, 0, 1},
    {L"position", Function::kPosition, 0, 0},
    {L"round", Function::kRound, 1, 1},
    {L"starts-with", Function::kStartsWith, 2, 2},
    {L"string", Function::kString, 0, 1},
    {L"string-length", Function::kStringLength, 0, 1},
    {L"substring", Function::kSubstring, 2, 3},
    {L"substring-after", Function::kSubstringAfter, 2, 2},
    {L"substring-before", Function::kSubstringBefore, 2, 2},
    {L"sum", Function::kSum, 1, 1},
    {L"translate", Function::kTranslate, 3, 3},
    {L"true", Function::kTrue, 0, 0},
};

struct OperatorSign {
  std::wstring_view sign;
  Operator meaning;
  int rank;
};
/// Longer signs stand before those they begin with.
constexpr OperatorSign kOperators[] = {
    {L"or", Operator::kOr, 0},
    {L"and", Operator::kAnd, 1},
    {L"=", Operator::kEqual, 2},
    {L"!=", Operator::kNotEqual, 2},
    {L"<=", Operator::kLessOrEqual, 3},
    {L"<", Operator::kLess, 3},
    {L">=", Operator::kGreaterOrEqual, 3},
    {L">", Operator::kGreater, 3},
    {L"+", Operator::kAdd, 4},
    {L"-", Operator::kSubtract, 4},
    {L"*", Operator::kMultiply, 5},
    {L"div", Operator::kDivide, 5},
    {L"mod", Operator::kModulo, 5},
    {L"|", Operator::kUnite, 6},
};
constexpr int kUnionRank = 6;

template <typename Table>
auto Find(const Table& table, std::wstring_view name) {
  const auto found = std::ranges::find_if(table, [&](const auto& row) { return row.name == name; });
  return found == std::end(table) ? nullptr : &*found;
}

bool IsNameStart(wchar_t unit) {
  const auto code = static_cast<unsigned>(unit);
  return unit == L'_' || xmlIsBaseCharQ(code) || xmlIsIdeographicQ(code);
}

bool IsDigit(wchar_t unit) {
  return unit >= L'0' && unit <= L'9';
}

bool IsNameUnit(wchar_t unit) {
  const auto code = static_cast<unsigned>(unit);
  return IsNameStart(unit) || unit == L'.' || unit == L'-' || xmlIsDigitQ(code) ||
         xmlIsCombiningQ(code) || xmlIsExtenderQ(code);
}

class Parser {
 public:
  explicit Parser(std::wstring_view text) : m_rest(text) {}

  Expression ParseWhole() {
    Expression whole = ParseExpression();
    if (!m_rest.empty()) Fail();
    return whole;
  }

 private:
  /// Counts how deep expressions nest while it lives.
  class Level {
   public:
    explicit Level(int& depth) : m_depth(depth) {
      if (++m_depth > kMaxDepth) Fail();
    }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    ~Level() { --m_depth; }

   private:
    int& m_depth;
  };

  [[noreturn]] static void Fail() { throw QueryError(); }

  // White space may stand between any two tokens: each Take skips what stands before its token.

  void SkipSpace() {
    m_rest.remove_prefix(std::min(m_rest.find_first_not_of(L" \t\n\r"), m_rest.size()));
  }

  bool Sees(std::wstring_view sign) {
    SkipSpace();
    return m_rest.starts_with(sign);
  }

  bool Take(std::wstring_view sign) {
    if (!Sees(sign)) return false;
    m_rest.remove_prefix(sign.size());
    return true;
  }

  void Expect(std::wstring_view sign) {
    if (!Take(sign)) Fail();
  }

  /// The name without a colon that stands here; empty if none does.
  std::wstring_view SeeName() {
    SkipSpace();
    std::size_t size = 0;
    if (!m_rest.empty() && IsNameStart(m_rest[0])) {
      size = 1;
      while (size < m_rest.size() && IsNameUnit(m_rest[size])) ++size;
    }
    return m_rest.substr(0, size);
  }

  std::wstring_view TakeName() {
    const std::wstring_view name = SeeName();
    if (name.empty()) Fail();
    m_rest.remove_prefix(name.size());
    return name;
  }

  /// True if a name and then `sign` stand here.
  bool SeesNameBefore(std::wstring_view sign) {
    const std::wstring_view here = m_rest;
    m_rest.remove_prefix(SeeName().size());
    const bool result = Sees(sign);
    m_rest = here;
    return result;
  }

  std::wstring TakeLiteral() {
    const wchar_t quote[] = {m_rest[0], L'\0'};
    const std::size_t end = m_rest.find(quote, 1);
    if (end == m_rest.npos) Fail();
    std::wstring text(m_rest.substr(1, end - 1));
    m_rest.remove_prefix(end + 1);
    return text;
  }

  double TakeNumber() {
    std::size_t size = 0;
    bool isFraction = false;
    while (size < m_rest.size() && (IsDigit(m_rest[size]) || (m_rest[size] == L'.' && !isFraction)))
      isFraction |= m_rest[size++] == L'.';
    const double number = ToNumber(m_rest.substr(0, size));
    m_rest.remove_prefix(size);
    return number;
  }

  const OperatorSign* SeeOperator() {
    const std::wstring_view name = SeeName();
    const auto found = std::ranges::find_if(kOperators, [&](const OperatorSign& row) {
      return name.empty() ? m_rest.starts_with(row.sign) : row.sign == name;
    });
    return found == std::end(kOperators) ? nullptr : found;
  }

  Expression ParseExpression() {
    const Level level(m_depth);
    return ParseChain(0);
  }

  static Expression NewCall(Function function, Expression argument) {
    Call call = {function, {}};
    call.arguments.push_back(std::move(argument));
    return {std::move(call)};
  }

  Expression ParseChain(int rank) {
    if (rank == kUnionRank) return ParseSigned();
    return ParseOperands(rank, [&] { return ParseChain(rank + 1); });
  }

  /// Signs bind less than a union: -a|b is -(a|b).
  Expression ParseSigned() {
    bool isSigned = false;
    bool isNegative = false;
    for (; Take(L"-"); isSigned = true) isNegative = !isNegative;
    Expression operand = ParseOperands(kUnionRank, [&] { return ParsePath(); });
    if (!isSigned) return operand;
    return NewCall(isNegative ? Function::kNegate : Function::kNumber, std::move(operand));
  }

  template <typename ParseOperand>
  Expression ParseOperands(int rank, ParseOperand parseOperand) {
    Expression first = parseOperand();
    const OperatorSign* sign = SeeOperator();
    if (sign == nullptr || sign->rank != rank) return first;
    Chain chain;
    chain.operands.push_back(std::move(first));
    for (; sign != nullptr && sign->rank == rank; sign = SeeOperator()) {
      m_rest.remove_prefix(sign->sign.size());
      chain.operators.push_back(sign->meaning);
      chain.operands.push_back(parseOperand());
    }
    return {std::move(chain)};
  }

  Expression ParsePath() {
    Path path;
    if (SeesPrimary()) {
      Expression primary = ParsePrimary();
      path.startPredicates = ParsePredicates();
      if (path.startPredicates.empty() && !Sees(L"/")) return primary;
      path.start = std::make_unique<Expression>(std::move(primary));
      if (!Sees(L"/")) return {std::move(path)};
    } else if (Sees(L"/")) {
      path.isAbsolute = true;
      if (!Sees(L"//")) {
        Expect(L"/");
        if (!SeesStep()) return {std::move(path)};
        path.steps.push_back(ParseStep());
      }
    } else {
      path.steps.push_back(ParseStep());
    }
    while (Sees(L"/")) {
      if (Take(L"//"))
        path.steps.push_back({Axis::kDescendantOrSelf, {}, {}});
      else
        Expect(L"/");
      path.steps.push_back(ParseStep());
    }
    return {std::move(path)};
  }

  bool SeesPrimary() {
    SkipSpace();
    if (m_rest.empty()) return false;
    const wchar_t next = m_rest[0];
    if (next == L'(' || next == L'"' || next == L'\'' || IsDigit(next)) return true;
    if (next == L'.') return m_rest.size() > 1 && IsDigit(m_rest[1]);
    return SeesNameBefore(L"(") && Find(kNodeTypes, SeeName()) == nullptr;
  }

  Expression ParsePrimary() {
    if (Take(L"(")) {
      Expression inner = ParseExpression();
      Expect(L")");
      return inner;
    }
    if (m_rest[0] == L'"' || m_rest[0] == L'\'') return {TakeLiteral()};
    if (m_rest[0] == L'.' || IsDigit(m_rest[0])) return {TakeNumber()};
    return {ParseCall()};
  }

  Call ParseCall() {
    const FunctionName* const named = Find(kFunctions, TakeName());
    if (named == nullptr) Fail();
    Call call = {named->function, {}};
    Expect(L"(");
    if (!Take(L")")) {
      do {
        call.arguments.push_back(ParseExpression());
      } while (Take(L","));
      Expect(L")");
    }
    if (call.arguments.size() < named->fewest || call.arguments.size() > named->most) Fail();
    return call;
  }

  std::vector<Expression> ParsePredicates() {
    std::vector<Expression> predicates;
    while (Take(L"[")) {
      predicates.push_back(ParseExpression());
      Expect(L"]");
    }
    return predicates;
  }

  bool SeesStep() { return Sees(L".") || Sees(L"@") || Sees(L"*") || !SeeName().empty(); }

  Step ParseStep() {
    if (Take(L"..")) return {Axis::kParent, {}, {}};
    if (Take(L".")) return {Axis::kSelf, {}, {}};
    Step step;
    if (Take(L"@")) {
      step.axis = Axis::kAttribute;
    } else if (SeesNameBefore(L"::")) {
      const AxisName* const named = Find(kAxes, TakeName());
      if (named == nullptr) Fail();
      step.axis = named->axis;
      Expect(L"::");
    }
    step.test = ParseNodeTest();
    step.predicates = ParsePredicates();
    return step;
  }

  NodeTest ParseNodeTest() {
    NodeTest test;
    test.kind = NodeTest::Kind::kName;
    test.isAnyUri = Take(L"*");
    if (test.isAnyUri) return test;
    const bool isNodeType = SeesNameBefore(L"(");
    const std::wstring_view name = TakeName();
    if (isNodeType) return ParseNodeType(name);
    if (!m_rest.starts_with(L':') || m_rest.starts_with(L"::")) {
      test.name = name;
      return test;
    }
    // No white space stands in a qualified name, and no prefix but this is declared.
    m_rest.remove_prefix(1);
    if (name != L"xml") Fail();
    test.uri = kXmlUri;
    if (m_rest.starts_with(L'*'))
      m_rest.remove_prefix(1);
    else if (!m_rest.empty() && IsNameStart(m_rest[0]))
      test.name = TakeName();
    else
      Fail();
    return test;
  }

  NodeTest ParseNodeType(std::wstring_view name) {
    const NodeTypeName* const named = Find(kNodeTypes, name);
    if (named == nullptr) Fail();
    NodeTest test;
    test.kind = named->kind;
    Expect(L"(");
    if (test.kind == NodeTest::Kind::kInstruction && (Sees(L"\"") || Sees(L"'")))
      test.name = TakeLiteral();
    Expect(L")");
    return test;
  }

  std::wstring_view m_rest;
  int m_depth = 0;
};

}  // namespace

Expression Parse(std::wstring_view query) {
  return Parser(query).ParseWhole();
}

}  // namespace platform::xpath
