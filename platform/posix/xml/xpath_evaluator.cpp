#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <limits>
#include <unordered_set>

#include "platform/posix/xml/xpath.h"

namespace platform::xpath {

namespace {

constexpr wchar_t kSpace[] = L" \t\n\r";
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

using Value = std::variant<NodeSet, double, std::wstring, bool>;

struct Context {
  NodeId node;
  std::size_t position;  // from 1
  std::size_t size;
};

std::wstring_view TrimSpace(std::wstring_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kSpace), text.size()));
  return text.substr(0, text.find_last_not_of(kSpace) + 1);
}

std::wstring NumberText(double number) {
  if (std::isnan(number)) return L"NaN";
  if (std::isinf(number)) return number < 0 ? L"-Infinity" : L"Infinity";
  if (number == 0) return L"0";
  char digits[512];  // a double has no more
  const auto written = std::to_chars(digits, std::end(digits), number, std::chars_format::fixed);
  return std::wstring(digits, written.ptr);
}

/// Halves go up; what is to become 0 keeps its sign.
double Round(double number) {
  return number >= -0.5 && number < 0 ? -0.0 : std::floor(number + 0.5);
}

std::wstring Substring(const std::wstring& text, double begin, double size) {
  const double first = std::max(Round(begin), 1.0);
  const double behind = std::min(Round(begin) + Round(size), static_cast<double>(text.size()) + 1);
  if (std::isnan(begin) || !(first < behind)) return std::wstring();
  return text.substr(static_cast<std::size_t>(first) - 1, static_cast<std::size_t>(behind - first));
}

std::wstring NormalizeSpace(std::wstring_view text) {
  std::wstring result;
  for (const wchar_t unit : TrimSpace(text)) {
    const bool isSpace = std::wstring_view(kSpace).find(unit) != std::wstring_view::npos;
    if (!isSpace)
      result += unit;
    else if (result.back() != L' ')
      result += L' ';
  }
  return result;
}

std::wstring Translate(const std::wstring& text, const std::wstring& from, const std::wstring& to) {
  std::wstring result;
  for (const wchar_t unit : text) {
    const std::size_t at = from.find(unit);
    if (at == from.npos)
      result += unit;
    else if (at < to.size())
      result += to[at];
  }
  return result;
}

bool IsLanguage(std::wstring_view language, std::wstring_view wanted) {
  if (language.size() < wanted.size()) return false;
  const auto lower = [](wchar_t unit) {
    return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit + (L'a' - L'A')) : unit;
  };
  const bool begins =
      std::ranges::equal(language.substr(0, wanted.size()), wanted, {}, lower, lower);
  return begins && (language.size() == wanted.size() || language[wanted.size()] == L'-');
}

bool AreInOrder(Operator sign, double left, double right) {
  switch (sign) {
    case Operator::kLess:
      return left < right;
    case Operator::kLessOrEqual:
      return left <= right;
    case Operator::kGreater:
      return left > right;
    default:
      return left >= right;
  }
}

bool IsEquality(Operator sign) {
  return sign == Operator::kEqual || sign == Operator::kNotEqual;
}

double Calculate(Operator sign, double left, double right) {
  switch (sign) {
    case Operator::kAdd:
      return left + right;
    case Operator::kSubtract:
      return left - right;
    case Operator::kMultiply:
      return left * right;
    case Operator::kDivide:
      return left / right;
    default:
      return std::fmod(left, right);
  }
}

class Evaluator {
 public:
  Evaluator(const XmlTree& tree, Budget& budget) : m_tree(tree), m_budget(budget) {}

  Value Evaluate(const Expression& expression, const Context& context) {
    m_budget.Spend(1);
    return std::visit([&](const auto& form) { return Value(EvaluateForm(form, context)); },
                      expression.form);
  }

  static NodeSet TakeNodes(Value value) {
    NodeSet* const nodes = std::get_if<NodeSet>(&value);
    if (nodes == nullptr) throw QueryError();
    return std::move(*nodes);
  }

 private:
  double EvaluateForm(double number, const Context&) { return number; }

  std::wstring EvaluateForm(const std::wstring& text, const Context&) {
    m_budget.Spend(text.size());
    return text;
  }

  NodeSet EvaluateForm(const Path& path, const Context& context) {
    NodeSet nodes = {path.isAbsolute ? kDocumentNode : context.node};
    if (path.start != nullptr) {
      nodes = TakeNodes(Evaluate(*path.start, context));
      Filter(nodes, path.startPredicates);
    }
    for (const Step& step : path.steps) nodes = Take(step, nodes);
    return nodes;
  }

  Value EvaluateForm(const Chain& chain, const Context& context) {
    Value result = Evaluate(chain.operands[0], context);
    for (std::size_t i = 0; i < chain.operators.size(); ++i) {
      const Operator sign = chain.operators[i];
      const Expression& operand = chain.operands[i + 1];
      if (sign == Operator::kOr || sign == Operator::kAnd) {
        const bool settled = sign == Operator::kOr;
        if (Boolean(result) == settled) return settled;
        result = Boolean(Evaluate(operand, context));
      } else {
        result = Combine(sign, std::move(result), Evaluate(operand, context));
      }
    }
    if (chain.operators[0] == Operator::kUnite) Arrange(std::get<NodeSet>(result));
    return result;
  }

  Value Combine(Operator sign, Value left, Value right) {
    switch (sign) {
      case Operator::kUnite: {
        NodeSet nodes = TakeNodes(std::move(left));
        const NodeSet others = TakeNodes(std::move(right));
        nodes.insert(nodes.end(), others.begin(), others.end());
        return nodes;
      }
      case Operator::kEqual:
      case Operator::kNotEqual:
      case Operator::kLess:
      case Operator::kLessOrEqual:
      case Operator::kGreater:
      case Operator::kGreaterOrEqual:
        return Compare(sign, left, right);
      default:
        return Calculate(sign, Number(left), Number(right));
    }
  }

  // Comparisons. That with a set of nodes asks whether any of them fits.

  bool Compare(Operator sign, const Value& left, const Value& right) {
    const auto* const leftNodes = std::get_if<NodeSet>(&left);
    const auto* const rightNodes = std::get_if<NodeSet>(&right);
    if (leftNodes != nullptr && rightNodes != nullptr)
      return CompareSets(sign, *leftNodes, *rightNodes);
    if (leftNodes != nullptr) {
      if (std::holds_alternative<bool>(right)) return CompareSingle(sign, Boolean(left), right);
      return std::ranges::any_of(
          *leftNodes, [&](NodeId node) { return CompareSingle(sign, NodeText(node), right); });
    }
    if (rightNodes != nullptr) {
      if (std::holds_alternative<bool>(left)) return CompareSingle(sign, left, Boolean(right));
      return std::ranges::any_of(
          *rightNodes, [&](NodeId node) { return CompareSingle(sign, left, NodeText(node)); });
    }
    return CompareSingle(sign, left, right);
  }

  bool CompareSingle(Operator sign, const Value& left, const Value& right) {
    if (!IsEquality(sign)) return AreInOrder(sign, Number(left), Number(right));
    const auto isEither = [&]<typename Type>(std::type_identity<Type>) {
      return std::holds_alternative<Type>(left) || std::holds_alternative<Type>(right);
    };
    const bool isEqual = isEither(std::type_identity<bool>())     ? Boolean(left) == Boolean(right)
                         : isEither(std::type_identity<double>()) ? Number(left) == Number(right)
                                                                  : Text(left) == Text(right);
    return isEqual == (sign == Operator::kEqual);
  }

  bool CompareSets(Operator sign, const NodeSet& left, const NodeSet& right) {
    if (left.empty() || right.empty()) return false;
    if (!IsEquality(sign)) return CompareExtremes(sign, left, right);
    std::unordered_set<std::wstring> texts;
    for (const NodeId node : left) texts.insert(NodeText(node));
    const auto isIn = [&](NodeId node) { return texts.contains(NodeText(node)); };
    if (sign == Operator::kEqual) return std::ranges::any_of(right, isIn);
    return texts.size() > 1 || !std::ranges::all_of(right, isIn);
  }

  /// The pair that fits, if any does, is one of smallest and greatest number.
  bool CompareExtremes(Operator sign, const NodeSet& left, const NodeSet& right) {
    const bool isUpwards = sign == Operator::kLess || sign == Operator::kLessOrEqual;
    const auto extreme = [&](const NodeSet& nodes, bool isLeast) {
      double result = kNaN;
      for (const NodeId node : nodes) {
        const double number = ToNumber(NodeText(node));
        result = isLeast ? std::fmin(result, number) : std::fmax(result, number);
      }
      return result;
    };
    return AreInOrder(sign, extreme(left, isUpwards), extreme(right, !isUpwards));
  }

  // Conversions.

  /// All the text in a node.
  std::wstring NodeText(NodeId id) {
    const XmlNode& node = m_tree[id];
    std::wstring text(m_tree.Text(id));
    if (node.kind == NodeKind::kElement || node.kind == NodeKind::kDocument) {
      m_budget.Spend(node.end - id);
      for (NodeId inner = id + 1; inner < node.end; ++inner) {
        const NodeKind kind = m_tree[inner].kind;
        if (kind == NodeKind::kText || kind == NodeKind::kSection) text += m_tree.Text(inner);
      }
    }
    m_budget.Spend(1 + text.size());
    return text;
  }

  std::wstring Text(const Value& value) {
    if (const auto* const nodes = std::get_if<NodeSet>(&value))
      return nodes->empty() ? std::wstring() : NodeText(nodes->front());
    if (const auto* const number = std::get_if<double>(&value)) return NumberText(*number);
    if (const auto* const boolean = std::get_if<bool>(&value)) return *boolean ? L"true" : L"false";
    m_budget.Spend(std::get<std::wstring>(value).size());
    return std::get<std::wstring>(value);
  }

  double Number(const Value& value) {
    if (const auto* const number = std::get_if<double>(&value)) return *number;
    if (const auto* const boolean = std::get_if<bool>(&value)) return *boolean ? 1 : 0;
    return ToNumber(Text(value));
  }

  static bool Boolean(const Value& value) {
    if (const auto* const nodes = std::get_if<NodeSet>(&value)) return !nodes->empty();
    if (const auto* const text = std::get_if<std::wstring>(&value)) return !text->empty();
    if (const auto* const boolean = std::get_if<bool>(&value)) return *boolean;
    const double number = std::get<double>(value);
    return number != 0 && !std::isnan(number);
  }

  // Location steps.

  NodeSet Take(const Step& step, const NodeSet& from) {
    const bool isDownwards = step.axis == Axis::kDescendant || step.axis == Axis::kDescendantOrSelf;
    NodeSet result;
    NodeSet candidates;
    NodeId done = 0;
    for (const NodeId node : from) {
      // What lies below a node that has been walked down has been met already.
      if (isDownwards && step.predicates.empty() && !m_tree.IsAttribute(node)) {
        if (node < done) continue;
        done = m_tree[node].end;
      }
      candidates.clear();
      Walk(step.axis, node, [&](NodeId candidate) {
        m_budget.Spend(1);
        if (Passes(step, candidate)) candidates.push_back(candidate);
      });
      Filter(candidates, step.predicates);
      result.insert(result.end(), candidates.begin(), candidates.end());
    }
    Arrange(result);
    return result;
  }

  /// Calls `visit` with the nodes of an axis, the nearest first.
  template <typename Visit>
  void Walk(Axis axis, NodeId id, Visit visit) {
    const XmlNode& node = m_tree[id];
    const bool hasSiblings = id != kDocumentNode && !m_tree.IsAttribute(id);
    const auto walkRange = [&](NodeId begin, NodeId end) {
      m_budget.Spend(end - begin);
      for (NodeId each = begin; each < end; ++each)
        if (!m_tree.IsAttribute(each)) visit(each);
    };
    switch (axis) {
      case Axis::kAncestorOrSelf:
        visit(id);
        [[fallthrough]];
      case Axis::kAncestor:
        for (NodeId each = node.parent; each != kNoNode; each = m_tree[each].parent) visit(each);
        break;
      case Axis::kAttribute:
        for (NodeId each = id + 1; each < m_tree[id].firstChild; ++each)
          if (m_tree[each].kind == NodeKind::kAttribute) visit(each);
        break;
      case Axis::kChild:
        m_tree.ForEachChild(id, visit);
        break;
      case Axis::kDescendantOrSelf:
        visit(id);
        [[fallthrough]];
      case Axis::kDescendant:
        walkRange(id + 1, node.end);
        break;
      case Axis::kFollowing:
        walkRange(node.end, m_tree.Size());
        break;
      case Axis::kFollowingSibling:
        if (hasSiblings)
          for (NodeId each = node.end; each < m_tree[node.parent].end; each = m_tree[each].end)
            visit(each);
        break;
      case Axis::kNamespace:
        WalkNamespaces(id, visit);
        break;
      case Axis::kParent:
        if (node.parent != kNoNode) visit(node.parent);
        break;
      case Axis::kPreceding:
        m_budget.Spend(id);
        for (NodeId each = id; each-- > 0;)
          if (!m_tree.IsAttribute(each) && m_tree[each].end <= id) visit(each);
        break;
      case Axis::kPrecedingSibling:
        if (hasSiblings) {
          NodeSet siblings;
          m_tree.ForEachChild(node.parent, [&](NodeId each) {
            m_budget.Spend(1);
            if (each < id) siblings.push_back(each);
          });
          std::for_each(siblings.rbegin(), siblings.rend(), visit);
        }
        break;
      case Axis::kSelf:
        visit(id);
        break;
    }
  }

  /// The declarations in scope, as far as no nearer one of the same prefix hides them.
  template <typename Visit>
  void WalkNamespaces(NodeId id, Visit visit) {
    if (m_tree[id].kind != NodeKind::kElement) return;
    std::unordered_set<std::uint32_t> seen;
    for (NodeId element = id; element != kDocumentNode; element = m_tree[element].parent)
      for (NodeId each = element + 1; each < m_tree[element].firstChild; ++each)
        if (m_tree[each].kind == NodeKind::kDeclaration && seen.insert(m_tree[each].name).second &&
            m_tree[each].size > 0)
          visit(each);
  }

  bool Passes(const Step& step, NodeId id) {
    const NodeKind kind = m_tree[id].kind;
    switch (step.test.kind) {
      case NodeTest::Kind::kNode:
        return true;
      case NodeTest::Kind::kText:
        return kind == NodeKind::kText || kind == NodeKind::kSection;
      case NodeTest::Kind::kComment:
        return kind == NodeKind::kComment;
      case NodeTest::Kind::kInstruction:
        return kind == NodeKind::kInstruction &&
               (!step.test.name || step.test.name == m_tree.Name(id).qualified);
      case NodeTest::Kind::kName:
        break;
    }
    const NodeKind principal = step.axis == Axis::kAttribute   ? NodeKind::kAttribute
                               : step.axis == Axis::kNamespace ? NodeKind::kDeclaration
                                                               : NodeKind::kElement;
    if (kind != principal) return false;
    if (step.test.isAnyUri) return true;
    return (!step.test.name || step.test.name == LocalName(id)) &&
           step.test.uri == NamespaceUri(id);
  }

  /// Leaves the nodes for which each predicate holds; positions count as the nodes stand.
  void Filter(NodeSet& nodes, const std::vector<Expression>& predicates) {
    for (const Expression& predicate : predicates) {
      std::size_t position = 0;
      const std::size_t size = nodes.size();
      std::erase_if(nodes, [&](NodeId node) {
        const Context context = {node, ++position, size};
        const Value value = Evaluate(predicate, context);
        if (const auto* const number = std::get_if<double>(&value))
          return *number != static_cast<double>(position);
        return !Boolean(value);
      });
    }
  }

  /// Document order, each node once.
  void Arrange(NodeSet& nodes) {
    if (std::ranges::adjacent_find(nodes, std::greater_equal()) == nodes.end()) return;
    m_budget.Spend(4 * nodes.size());
    std::ranges::sort(nodes);
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
  }

  // Names: those that XPath gives, which differ from the document's for declarations.

  bool HasName(NodeId id) const {
    const NodeKind kind = m_tree[id].kind;
    return kind == NodeKind::kElement || kind == NodeKind::kAttribute ||
           kind == NodeKind::kInstruction ||
           (kind == NodeKind::kDeclaration && m_tree.Name(id).prefixSize > 0);
  }

  std::wstring_view LocalName(NodeId id) const {
    return HasName(id) ? m_tree.Name(id).Local() : std::wstring_view();
  }

  std::wstring_view NamespaceUri(NodeId id) const {
    const bool isOwn = m_tree[id].kind != NodeKind::kDeclaration && HasName(id);
    return isOwn ? std::wstring_view(m_tree.Name(id).uri) : std::wstring_view();
  }

  std::wstring_view QualifiedName(NodeId id) const {
    if (m_tree[id].kind == NodeKind::kDeclaration || !HasName(id)) return LocalName(id);
    return m_tree.Name(id).qualified;
  }

  // Functions.

  Value EvaluateForm(const Call& call, const Context& context) {
    std::vector<Value> values;
    for (const Expression& argument : call.arguments) values.push_back(Evaluate(argument, context));
    if (values.empty()) values.emplace_back(NodeSet{context.node});  // where an argument may lack
    const auto text = [&](std::size_t index) { return Text(values[index]); };
    const auto number = [&](std::size_t index) { return Number(values[index]); };
    switch (call.function) {
      case Function::kBoolean:
        return Boolean(values[0]);
      case Function::kCeiling:
        return std::ceil(number(0));
      case Function::kConcat: {
        std::wstring all;
        for (const Value& value : values) all += Text(value);
        return all;
      }
      case Function::kContains:
        return Find(text(0), text(1)) != std::wstring::npos;
      case Function::kCount:
        return static_cast<double>(Nodes(values[0]).size());
      case Function::kFalse:
        return false;
      case Function::kFloor:
        return std::floor(number(0));
      case Function::kId:
        return NodeSet();
      case Function::kLang:
        return IsInLanguage(context.node, text(0));
      case Function::kLast:
        return static_cast<double>(context.size);
      case Function::kLocalName:
        return NameOfFirst(values[0], &Evaluator::LocalName);
      case Function::kName:
        return NameOfFirst(values[0], &Evaluator::QualifiedName);
      case Function::kNamespaceUri:
        return NameOfFirst(values[0], &Evaluator::NamespaceUri);
      case Function::kNegate:
        return -number(0);
      case Function::kNormalizeSpace:
        return NormalizeSpace(text(0));
      case Function::kNot:
        return !Boolean(values[0]);
      case Function::kNumber:
        return number(0);
      case Function::kPosition:
        return static_cast<double>(context.position);
      case Function::kRound:
        return Round(number(0));
      case Function::kStartsWith:
        return text(0).starts_with(text(1));
      case Function::kString:
        return text(0);
      case Function::kStringLength:
        return static_cast<double>(text(0).size());
      case Function::kSubstring:
        return Substring(text(0), number(1), values.size() > 2 ? number(2) : kInfinity);
      case Function::kSubstringAfter: {
        const std::wstring mark = text(1);
        const std::wstring whole = text(0);
        const std::size_t at = Find(whole, mark);
        return at == whole.npos ? std::wstring() : whole.substr(at + mark.size());
      }
      case Function::kSubstringBefore: {
        const std::wstring whole = text(0);
        const std::size_t at = Find(whole, text(1));
        return at == whole.npos ? std::wstring() : whole.substr(0, at);
      }
      case Function::kSum: {
        double sum = 0;
        for (const NodeId node : Nodes(values[0])) sum += ToNumber(NodeText(node));
        return sum;
      }
      case Function::kTranslate: {
        const std::wstring whole = text(0);
        const std::wstring from = text(1);
        m_budget.Spend(whole.size() * (1 + from.size()));
        return Translate(whole, from, text(2));
      }
      case Function::kTrue:
        return true;
    }
    throw QueryError();
  }

  static const NodeSet& Nodes(const Value& value) {
    const auto* const nodes = std::get_if<NodeSet>(&value);
    if (nodes == nullptr) throw QueryError();
    return *nodes;
  }

  std::size_t Find(const std::wstring& text, const std::wstring& part) {
    m_budget.Spend(text.size() * (1 + part.size() / 16));
    return text.find(part);
  }

  std::wstring NameOfFirst(const Value& value,
                           std::wstring_view (Evaluator::*nameOf)(NodeId) const) const {
    const NodeSet& nodes = Nodes(value);
    return nodes.empty() ? std::wstring() : std::wstring((this->*nameOf)(nodes.front()));
  }

  bool IsInLanguage(NodeId id, const std::wstring& wanted) {
    for (; id != kNoNode; id = m_tree[id].parent)
      for (NodeId each = id + 1; each < m_tree[id].firstChild; ++each) {
        m_budget.Spend(1);
        if (m_tree.Name(each).qualified == L"xml:lang")
          return IsLanguage(m_tree.Text(each), wanted);
      }
    return false;
  }

  const XmlTree& m_tree;
  Budget& m_budget;
};

}  // namespace

double ToNumber(std::wstring_view text) {
  text = TrimSpace(text);
  const std::size_t sign = text.starts_with(L'-') ? 1 : 0;
  const std::wstring_view digits = text.substr(sign);
  const auto isDigit = [](wchar_t unit) { return unit >= L'0' && unit <= L'9'; };
  const auto points = std::ranges::count(digits, L'.');
  const auto count = std::ranges::count_if(digits, isDigit);
  if (count == 0 || points > 1 || count + points != std::ssize(digits)) return kNaN;
  std::string narrow;
  for (const wchar_t unit : digits) narrow += static_cast<char>(unit);
  double number = 0;
  const char* const begin = narrow.data();
  const auto read = std::from_chars(begin, begin + narrow.size(), number, std::chars_format::fixed);
  const bool isOver = read.ec == std::errc::result_out_of_range &&
                      narrow.find_first_of("123456789") < narrow.find('.');
  if (isOver) number = kInfinity;
  return sign == 1 ? -number : number;
}

NodeSet Evaluate(const XmlTree& tree, NodeId context, const Expression& expression,
                 Budget& budget) {
  return Evaluator::TakeNodes(Evaluator(tree, budget).Evaluate(expression, {context, 1, 1}));
}

}  // namespace platform::xpath
