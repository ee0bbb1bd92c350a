#pragma once

// XPath 1.0 over an XmlTree: the parsed expression and its evaluation. Queries may come from
// hostile hands, so the parser bounds how deep an expression nests and the evaluation how much it
// may cost. (libxml2's own evaluation can be bounded only in part: a query of a few characters
// keeps it busy for minutes on a document of ordinary size.)
//
// Texts count UTF-16 units, as MSXML's do. There are no variables, no further functions, no
// prefixes but `xml`, and no element has an ID, since there are no document type declarations.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/posix/xml/xml_tree.h"

namespace platform::xpath {

/// Nodes in document order, each once.
using NodeSet = std::vector<NodeId>;

/// No valid expression, no nodes as its value, or the budget is used up.
struct QueryError {};

/// What evaluations may still cost: one for each node, unit of text and expression looked at.
class Budget {
 public:
  explicit Budget(std::uint64_t units) : m_left(units) {}
  void Spend(std::uint64_t units) {
    if (units > m_left) {
      m_left = 0;
      throw QueryError();
    }
    m_left -= units;
  }

 private:
  std::uint64_t m_left;
};

enum class Axis {
  kAncestor,
  kAncestorOrSelf,
  kAttribute,
  kChild,
  kDescendant,
  kDescendantOrSelf,
  kFollowing,
  kFollowingSibling,
  kNamespace,
  kParent,
  kPreceding,
  kPrecedingSibling,
  kSelf,
};

struct NodeTest {
  enum class Kind { kNode, kText, kComment, kInstruction, kName };
  Kind kind = Kind::kNode;
  std::optional<std::wstring> name;  // local, or an instruction's; none: any
  std::wstring uri;
  bool isAnyUri = false;
};

struct Expression;

struct Step {
  Axis axis = Axis::kChild;
  NodeTest test;
  std::vector<Expression> predicates;
};

/// A location path, relative to the context node, to the document, or to what `start` gives.
struct Path {
  bool isAbsolute = false;
  std::unique_ptr<Expression> start;
  std::vector<Expression> startPredicates;
  std::vector<Step> steps;
};

enum class Function {
  kBoolean,
  kCeiling,
  kConcat,
  kContains,
  kCount,
  kFalse,
  kFloor,
  kId,
  kLang,
  kLast,
  kLocalName,
  kName,
  kNamespaceUri,
  kNegate,  // the minus sign
  kNormalizeSpace,
  kNot,
  kNumber,
  kPosition,
  kRound,
  kStartsWith,
  kString,
  kStringLength,
  kSubstring,
  kSubstringAfter,
  kSubstringBefore,
  kSum,
  kTranslate,
  kTrue,
};

struct Call {
  Function function;
  std::vector<Expression> arguments;
};

enum class Operator {
  kOr,
  kAnd,
  kEqual,
  kNotEqual,
  kLess,
  kLessOrEqual,
  kGreater,
  kGreaterOrEqual,
  kAdd,
  kSubtract,
  kMultiply,
  kDivide,
  kModulo,
  kUnite,
};

/// Operands of one rank with an operator between each two, taken from the left.
struct Chain {
  std::vector<Expression> operands;
  std::vector<Operator> operators;
};

struct Expression {
  std::variant<double, std::wstring, Path, Call, Chain> form;
};

/// What XPath's number() makes of a text: NaN unless it is a decimal number, white space around it.
double ToNumber(std::wstring_view text);

/// Throws QueryError.
Expression Parse(std::wstring_view query);

/// Throws QueryError.
NodeSet Evaluate(const XmlTree& tree, NodeId context, const Expression& expression, Budget& budget);

}  // namespace platform::xpath
