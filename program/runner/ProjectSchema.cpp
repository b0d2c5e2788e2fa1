#include "program/runner/ProjectSchema.h"

#include "foundation/formats/Xml.h"
#include "foundation/text/Encoding.h"
#include "program/findings/Gates.h"
#include "program/runner/VerdictRules.h"

#include <map>
#include <vector>

namespace kx {

namespace {

// What does not depend on the plug-ins, but for the rules and the types that stand behind it.
constexpr std::string_view Head = R"(<?xml version="1.0" encoding="UTF-8"?>
<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
  <xs:element name="BuildProject">
    <xs:complexType>
      <xs:all>
        <xs:element name="Variables" minOccurs="0">
          <xs:complexType><xs:sequence>
            <xs:element name="Variable" type="NamedText" minOccurs="0" maxOccurs="unbounded"/>
          </xs:sequence></xs:complexType>
          <xs:unique name="VariablesOnce"><xs:selector xpath="Variable"/><xs:field xpath="@Name"/></xs:unique>
        </xs:element>
        <xs:element name="PropertySets" minOccurs="0">
          <xs:complexType><xs:sequence>
            <xs:element name="PropertySet" type="PropertySet" minOccurs="0" maxOccurs="unbounded"/>
          </xs:sequence></xs:complexType>
          <xs:unique name="SetsOnce"><xs:selector xpath="PropertySet"/><xs:field xpath="@Name"/></xs:unique>
        </xs:element>
        <xs:element name="Rules" minOccurs="0">
          <xs:complexType><xs:sequence>
            <xs:element name="Rule" type="Rule" minOccurs="0" maxOccurs="unbounded"/>
          </xs:sequence></xs:complexType>
          <xs:unique name="RulesOnce"><xs:selector xpath="Rule"/><xs:field xpath="@Name"/></xs:unique>
        </xs:element>
        <xs:element name="Gates" minOccurs="0">
          <xs:complexType>
            <xs:attribute name="Baseline" type="xs:string"/>
            <xs:attribute name="FailOn" type="FailOn"/>
            <xs:attribute name="MaxWarnings" type="xs:nonNegativeInteger"/>
          </xs:complexType>
        </xs:element>
        <xs:element name="Actions" minOccurs="0">
          <xs:complexType><xs:choice minOccurs="0" maxOccurs="unbounded">
            <xs:element name="Action" type="Action"/>
            <xs:element name="Group">
              <xs:complexType>
                <xs:sequence><xs:element name="Action" type="Action" minOccurs="0" maxOccurs="unbounded"/></xs:sequence>
                <xs:attribute name="Name" type="xs:string" use="required"/>
                <xs:attribute name="Needs" type="xs:string"/>
              </xs:complexType>
            </xs:element>
          </xs:choice></xs:complexType>
        </xs:element>
      </xs:all>
      <xs:attribute name="Name" type="xs:string"/>
    </xs:complexType>
  </xs:element>
  <xs:complexType name="NamedText">
    <xs:simpleContent><xs:extension base="xs:string">
      <xs:attribute name="Name" type="xs:string" use="required"/>
    </xs:extension></xs:simpleContent>
  </xs:complexType>
  <xs:complexType name="PropertySet">
    <xs:sequence><xs:element name="Value" type="NamedText" minOccurs="0" maxOccurs="unbounded"/></xs:sequence>
    <xs:attribute name="Name" type="xs:string" use="required"/>
    <xs:attribute name="Kind" use="required">
      <xs:simpleType><xs:restriction base="xs:string">
        <xs:enumeration value="Win32"/><xs:enumeration value="DotNet"/>
      </xs:restriction></xs:simpleType>
    </xs:attribute>
  </xs:complexType>
  <xs:simpleType name="Boolean">
    <xs:union memberTypes="Switch">
      <xs:simpleType><xs:restriction base="xs:token">
        <xs:pattern value="[Tt][Rr][Uu][Ee]|[Ff][Aa][Ll][Ss][Ee]|1|0|[Yy][Ee][Ss]|[Nn][Oo]"/>
      </xs:restriction></xs:simpleType>
    </xs:union>
  </xs:simpleType>
  <xs:simpleType name="Switch">
    <xs:restriction base="xs:token"><xs:enumeration value="True"/><xs:enumeration value="False"/></xs:restriction>
  </xs:simpleType>
  <xs:simpleType name="OnFailure">
    <xs:union memberTypes="Boolean">
      <xs:simpleType><xs:restriction base="xs:token"><xs:enumeration value="ignore"/></xs:restriction></xs:simpleType>
    </xs:union>
  </xs:simpleType>
  <xs:simpleType name="Retries">
    <xs:restriction base="xs:integer"><xs:minInclusive value="0"/><xs:maxInclusive value="100"/></xs:restriction>
  </xs:simpleType>
  <xs:simpleType name="TimeSpan">
    <xs:restriction base="xs:token"><xs:pattern value="[0-9]+[smh]?"/></xs:restriction>
  </xs:simpleType>
  <xs:complexType name="List" mixed="true">
    <xs:sequence><xs:element name="Line" type="xs:string" minOccurs="0" maxOccurs="unbounded"/></xs:sequence>
  </xs:complexType>
  <xs:complexType name="Any" mixed="true">
    <xs:sequence><xs:element name="Line" type="xs:string" minOccurs="0" maxOccurs="unbounded"/></xs:sequence>
    <xs:attribute name="Name" type="xs:string"/>
  </xs:complexType>
  <xs:complexType name="Actions">
    <xs:sequence><xs:element name="Action" type="InnerAction" minOccurs="0" maxOccurs="unbounded"/></xs:sequence>
  </xs:complexType>
)";

std::string Enumeration(std::string_view value, std::u16string_view help = {}) {
  const std::string start = "<xs:enumeration value=\"" + std::string(value) + "\"";
  if (help.empty()) return start + "/>";
  return start + "><xs:annotation><xs:documentation>" + text::ToUtf8(XmlEscape(help)) +
         "</xs:documentation></xs:annotation></xs:enumeration>";
}

std::string Choice(const std::string& values) {
  return "<xs:simpleType><xs:restriction base=\"xs:token\">" + values + "</xs:restriction></xs:simpleType>";
}

std::string FailOnType() {
  std::string words;
  for (const auto word : FailOnWords())
    words += Enumeration(text::ToUtf8(word));
  return "  <xs:simpleType name=\"FailOn\"><xs:restriction base=\"xs:token\">" + words +
         "</xs:restriction></xs:simpleType>\n";
}

std::string RuleType() {
  std::string names;
  for (const TVerdictRule& rule : VerdictRules())
    names += "\n        " + Enumeration(text::ToUtf8(rule.Name), rule.Help);
  std::string severities;
  for (const auto severity : {TRuleSeverity::Error, TRuleSeverity::Warning, TRuleSeverity::Off})
    severities += Enumeration(text::ToUtf8(SeverityName(severity)));
  return "  <xs:simpleType name=\"Severity\"><xs:restriction base=\"xs:token\">" + severities +
         "</xs:restriction></xs:simpleType>\n"
         "  <xs:complexType name=\"Rule\">\n    <xs:simpleContent><xs:extension base=\"Severity\">\n"
         "      <xs:attribute name=\"Name\" use=\"required\">" +
         Choice(names) + "</xs:attribute>\n    </xs:extension></xs:simpleContent>\n  </xs:complexType>\n";
}

// The name, or the ordinal with the name beside it.
std::string EnumerationType(const TKxEnumeration& enumeration) {
  std::string names;
  std::string ordinals;
  for (std::size_t i = 0; i < enumeration.Values.size(); ++i) {
    names += Enumeration(text::ToUtf8(enumeration.Values[i]));
    ordinals += Enumeration(std::to_string(i));
  }
  const std::string name = text::ToUtf8(enumeration.Name);
  return "  <xs:simpleType name=\"" + name + "Name\"><xs:restriction base=\"xs:token\">" + names +
         "</xs:restriction></xs:simpleType>\n  <xs:simpleType name=\"" + name +
         "Value\"><xs:union memberTypes=\"" + name + "Name\">" + Choice(ordinals + Enumeration("")) +
         "</xs:union></xs:simpleType>\n  <xs:complexType name=\"" + name +
         "\"><xs:simpleContent><xs:extension base=\"" + name + "Value\"><xs:attribute name=\"Name\" type=\"" +
         name + "Name\"/></xs:extension></xs:simpleContent></xs:complexType>\n";
}

std::string TypeOf(const TKxPublishedProperty& property) {
  switch (property.Kind) {
  case TKxPropertyKind::Boolean:
    return "Boolean";
  case TKxPropertyKind::Integer:
    return "xs:integer";
  case TKxPropertyKind::Enumeration:
    return text::ToUtf8(property.Enumeration->Name);
  case TKxPropertyKind::String:
    return "xs:string";
  case TKxPropertyKind::StringList:
    return "List";
  }
  return "Any";
}

// A property of this name, whatever the action: an element has one type wherever it stands.
struct TSchemaProperty {
  std::string Type;
  std::vector<std::u16string> Help; // "DEVENV: The solution file to build."
};

class TActionSchema {
public:
  explicit TActionSchema(TProject& scratch) {
    for (const auto& type : scratch.Services().Actions()) {
      types_ += "\n        " + Enumeration(text::ToUtf8(type.Identifier), type.Category);
      for (const auto* property : scratch.AddAction(type.Identifier).Properties())
        if (!property->ReadOnly) Add(type.Identifier, *property);
    }
  }

  std::string Text() const {
    std::string out;
    for (const auto& [name, enumeration] : enumerations_)
      out += EnumerationType(*enumeration);
    out += "  <xs:complexType name=\"InnerAction\">\n    <xs:all>\n";
    for (const auto& [name, property] : properties_)
      out += Element(name, property);
    return out +
           "      <xs:element name=\"Actions\" type=\"Actions\" minOccurs=\"0\"/>\n    </xs:all>\n"
           "    <xs:attribute name=\"Type\" use=\"required\">" +
           Choice(types_) +
           "</xs:attribute>\n    <xs:attribute name=\"Name\" type=\"xs:string\"/>\n"
           "    <xs:attribute name=\"ContinueOnError\" type=\"OnFailure\"/>\n" +
           Terms(false) +
           "  </xs:complexType>\n"
           "  <xs:complexType name=\"Action\">\n    <xs:complexContent><xs:extension "
           "base=\"InnerAction\">\n" +
           Terms(true) + "    </xs:extension></xs:complexContent>\n  </xs:complexType>\n";
  }

private:
  static std::string Terms(bool outermostOnly) {
    std::string out;
    for (const TTermAttribute& attribute : TermAttributes())
      if (attribute.IsOutermostOnly == outermostOnly)
        out += "    <xs:attribute name=\"" + text::ToUtf8(attribute.Name) + "\" type=\"" +
               std::string(attribute.Schema) + "\"><xs:annotation><xs:documentation>" +
               text::ToUtf8(XmlEscape(attribute.Help)) +
               "</xs:documentation></xs:annotation></xs:attribute>\n";
    return out;
  }

  void Add(const std::u16string& action, const TKxPublishedProperty& property) {
    if (property.Enumeration != nullptr)
      enumerations_.try_emplace(property.Enumeration->Name, property.Enumeration);
    const std::string type = TypeOf(property);
    TSchemaProperty& known = properties_[property.Name];
    if (known.Type.empty()) known.Type = type;
    if (known.Type != type) known.Type = "Any";
    known.Help.push_back(action + u": " + std::u16string(property.Help));
  }

  static std::string Element(std::u16string_view name, const TSchemaProperty& property) {
    std::string help;
    for (const auto& line : property.Help)
      help += (help.empty() ? "" : "\n") + text::ToUtf8(XmlEscape(line));
    return "      <xs:element name=\"" + text::ToUtf8(name) + "\" type=\"" + property.Type +
           "\" minOccurs=\"0\"><xs:annotation><xs:documentation>" + help +
           "</xs:documentation></xs:annotation></xs:element>\n";
  }

  std::string types_;
  std::map<std::u16string_view, const TKxEnumeration*> enumerations_;
  std::map<std::u16string_view, TSchemaProperty> properties_;
};

} // namespace

std::string ProjectSchema(TProject& scratch) {
  return std::string(Head) + FailOnType() + RuleType() + TActionSchema(scratch).Text() + "</xs:schema>\n";
}

} // namespace kx
