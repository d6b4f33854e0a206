#include "kit/confd/document/envelope.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

namespace kit::store {
namespace {

constexpr char kConfigNs[] = "http://tail-f.com/ns/config/1.0";
constexpr char kNetconfNs[] = "urn:ietf:params:xml:ns:netconf:base:1.0";

// The text with runs of blanks as one, so that wrappers' places do not show.
std::string Squeezed(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c != ' ' || (!out.empty() && out.back() != ' ')) out += c;
  }
  while (!out.empty() && out.back() == ' ') out.pop_back();
  return out;
}

struct WrapCase {
  std::string text;
  Wrapping wrapping;
  std::string inside;
};

std::string Xmlns(const std::string& ns) { return " xmlns=\"" + ns + "\""; }

TEST(UnwrapXml, TakesWrappersOff) {
  const WrapCase cases[] = {
      {"<a/>", Wrapping::kNone, "<a/>"},
      {"<a/><b/>", Wrapping::kNone, "<a/><b/>"},
      {"<config" + Xmlns(kConfigNs) + "><a/></config>", Wrapping::kConfig,
       "<a/>"},
      {"<config xmlns='" + std::string(kConfigNs) + "'><a/></config >",
       Wrapping::kConfig, "<a/>"},
      {"<config" + Xmlns(kConfigNs) + "/>", Wrapping::kConfig, ""},
      {"<rpc-reply" + Xmlns(kNetconfNs) +
           " message-id=\"1>2\"><data><a/></data></rpc-reply>",
       Wrapping::kNetconf, "<a/>"},
      {"<rpc-reply" + Xmlns(kNetconfNs) + "><data/></rpc-reply>",
       Wrapping::kNetconf, ""},
      {"<data" + Xmlns(kNetconfNs) + "><a/></data>", Wrapping::kNetconf,
       "<a/>"},
      {"<config" + Xmlns(kNetconfNs) + "><a/></config>", Wrapping::kNetconf,
       "<a/>"},
      {"<nc:data xmlns:nc=\"" + std::string(kNetconfNs) + "\"><a/></nc:data>",
       Wrapping::kNetconf, "<a/>"},
      {"<nc:rpc-reply xmlns:nc=\"" + std::string(kNetconfNs) +
           "\"><nc:data><a/></nc:data></nc:rpc-reply>",
       Wrapping::kNetconf, "<a/>"},
      {"<data" + Xmlns(kNetconfNs) + "><config" + Xmlns(kConfigNs) +
           "><a/></config></data>",
       Wrapping::kNetconf, "<a/>"},
      // Elements of the same name that are the user's own.
      {"<config xmlns=\"urn:u\"><a/></config>", Wrapping::kNone,
       "<config xmlns=\"urn:u\"><a/></config>"},
      {"<config" + Xmlns(kConfigNs) + "><config xmlns=\"urn:u\"/></config>",
       Wrapping::kConfig, "<config xmlns=\"urn:u\"/>"},
      {"<data" + Xmlns(kConfigNs) + "/>", Wrapping::kNone,
       "<data" + Xmlns(kConfigNs) + "/>"},
      {"<nc:data><a/></nc:data>", Wrapping::kNone, "<nc:data><a/></nc:data>"},
      // Comments, sections and instructions may stand anywhere.
      {"<?xml version=\"1.0\"?><!-- <config> --><config" + Xmlns(kConfigNs) +
           "><!-- </config> --><a><![CDATA[</a>]]></a><?pi > ?></config>",
       Wrapping::kConfig,
       "<?xml version=\"1.0\"?><!-- <config> --> <!-- </config> -->"
       "<a><![CDATA[</a>]]></a><?pi > ?>"},
      {"\xef\xbb\xbf<a/>", Wrapping::kNone, "<a/>"},
      {"<a/>\n]]>]]>\n", Wrapping::kNone, "<a/>\n \n"},
      {"<a xmlns:b='>' xmlns:c=\"'/>\"/>", Wrapping::kNone,
       "<a xmlns:b='>' xmlns:c=\"'/>\"/>"},
  };
  for (const WrapCase& one : cases) {
    std::string text = one.text;
    Envelope envelope = Unwrap(text);
    EXPECT_EQ(envelope.syntax, Syntax::kXml);
    EXPECT_EQ(envelope.wrapping, one.wrapping) << one.text;
    EXPECT_EQ(Squeezed(text), one.inside) << one.text;
  }
}

TEST(UnwrapXml, PassesOnWhatWrappersDeclare) {
  const std::pair<std::string, std::string> cases[] = {
      {"<config" + Xmlns(kConfigNs) +
           " xmlns:p=\"urn:p\"><p:a/><b><c/></b></config>",
       "<p:a xmlns:p=\"urn:p\"/><b><c/></b>"},
      // Wherever the element needs it, in a value too.
      {"<config" + Xmlns(kConfigNs) +
           " xmlns:p=\"urn:p\" xmlns:q=\"urn:q\" xmlns:r=\"urn:r\">"
           "<a><q:b>/p:c</q:b></a></config>",
       "<a xmlns:p=\"urn:p\" xmlns:q=\"urn:q\"><q:b>/p:c</q:b></a>"},
      // Unless the element declares the prefix itself.
      {"<config" + Xmlns(kConfigNs) +
           " xmlns:p=\"urn:p\"><a xmlns:p=\"urn:q\"/>"
           "</config>",
       "<a xmlns:p=\"urn:q\"/>"},
      // The innermost wrapper's declaration holds.
      {"<rpc-reply" + Xmlns(kNetconfNs) +
           " xmlns:p=\"urn:p\" xmlns:o=\"urn:o\">"
           "<data xmlns:p=\"urn:q\"><p:a><o:b/></p:a></data></rpc-reply>",
       "<p:a xmlns:o=\"urn:o\" xmlns:p=\"urn:q\"><o:b/></p:a>"},
      // A default namespace too, where the wrapper itself has a prefix.
      {"<nc:data xmlns:nc=\"" + std::string(kNetconfNs) +
           "\" xmlns=\"urn:u\"><a/><b xmlns=\"urn:v\"/></nc:data>",
       "<a xmlns=\"urn:u\"/><b xmlns=\"urn:v\"/>"},
      {"<config" + Xmlns(kConfigNs) + " xmlns:p='a\"b'><p:a/></config>",
       "<p:a xmlns:p='a\"b'/>"},
      // The user's element under a prefix is no wrapper.
      {"<config" + Xmlns(kConfigNs) + " xmlns:u=\"urn:u\"><u:config/></config>",
       "<u:config xmlns:u=\"urn:u\"/>"},
  };
  for (const auto& [wrapped, inside] : cases) {
    std::string text = wrapped;
    Unwrap(text);
    EXPECT_EQ(Squeezed(text), inside);
  }
}

TEST(UnwrapXml, KeepsLineNumbers) {
  std::string text = "<config\n" + Xmlns(kConfigNs) + ">\n<a>\n</a>\n</config>";
  Unwrap(text);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4);
  EXPECT_EQ(
      std::count(text.begin(),
                 text.begin() + static_cast<long>(text.find("<a>")), '\n'),
      2);
}

TEST(UnwrapJson, TakesTheDataMemberOff) {
  const std::pair<const char*, const char*> cases[] = {
      {"{}", "{}"},
      {"{\"m:a\": {}}", "{\"m:a\": {}}"},
      {"{\"data\": {\"m:a\": {}}}", "{\"m:a\": {}}"},
      {"{ \"ietf-restconf:data\" : {\"m:a\": {}} }", "{\"m:a\": {}}"},
      {"{\"data\": 5}", "{\"data\": 5}"},
      {"{\"data\": {\"m:a\": {\"b\": \"}\"}} \n}",
       "{\"m:a\": {\"b\": \"}\"}} \n"},
  };
  for (const auto& [wrapped, inside] : cases) {
    std::string text = wrapped;
    Envelope envelope = Unwrap(text);
    EXPECT_EQ(envelope.syntax, Syntax::kJson);
    EXPECT_EQ(Squeezed(text), inside);
  }
}

TEST(UnwrapXml, DoesNotRepeatEveryDeclarationInEveryElement) {
  // Each child uses one of the prefixes.
  std::string text = "<config" + Xmlns(kConfigNs);
  constexpr int kCount = 2000;
  for (int i = 0; i < kCount; ++i) {
    text += " xmlns:p" + std::to_string(i) + "=\"urn:p\"";
  }
  text += ">";
  for (int i = 0; i < kCount; ++i) {
    text += "<p" + std::to_string(i) + ":a/>";
  }
  text += "</config>";
  const size_t size = text.size();
  Unwrap(text);
  EXPECT_LT(text.size(), 2 * size);
}

struct BadCase {
  std::string text;
  size_t line;
  const char* reason;
};

template <size_t kCount>
void ExpectErrors(const BadCase (&cases)[kCount]) {
  for (const BadCase& one : cases) {
    std::string text = one.text;
    try {
      Unwrap(text);
      ADD_FAILURE() << "accepted " << one.text.substr(0, 80);
    } catch (const EnvelopeError& error) {
      EXPECT_EQ(error.line, one.line) << one.text.substr(0, 80);
      EXPECT_EQ(std::string(error.what()).find(one.reason), 0u)
          << error.what() << "\n  instead of " << one.reason;
    }
  }
}

TEST(Unwrap, SaysWhereAndWhyATextIsNoConfiguration) {
  std::string deep_xml;
  for (int i = 0; i < 600; ++i) deep_xml += "<a>\n";
  const BadCase cases[] = {
      {"", 1, "it is empty"},
      {" \n\n ", 1, "it is empty"},
      {"plain\ntext", 1, "it is neither XML"},
      {"\n\n[1]", 3, "it is neither XML"},
      {std::string("<a>\n\0</a>", 9), 2, "it holds binary data"},
      {"<a>\n<b>\n", 3, "the document ends before </b>"},
      {"<a>\n</b>", 2, "</b> closes <a>"},
      {"</a>", 1, "</a> closes nothing"},
      {"<a></a></a>", 1, "</a> closes nothing"},
      {"<a\n", 1, "the document ends inside a tag"},
      {"<a>\n<b <c/>", 2, "unexpected '<' inside a tag"},
      {"<a x=\"1>\n", 1, "the document ends inside a tag"},
      {"\n<!-- open", 2, "the comment is not closed"},
      {"<a>\n<![CDATA[ ]] </a>", 2, "the CDATA section is not closed"},
      {"<?xml version", 1, "the processing instruction is not closed"},
      {"<!DOCTYPE a [<!ENTITY x \"y\">]>\n<a/>", 1,
       "a document type declaration is not part of a configuration"},
      {"<config" + Xmlns(kConfigNs) + "><a/></config>\n<b/>", 2,
       "<b> stands behind what is to hold the whole configuration"},
      {"<rpc-reply" + Xmlns(kNetconfNs) + "><data/>\n<b/></rpc-reply>", 2,
       "<b> stands behind what is to hold the whole configuration"},
      {"<rpc-reply" + Xmlns(kNetconfNs) + ">\n<rpc-error><error-tag/>", 2,
       "it is NETCONF's answer to a request that failed (<rpc-error>)"},
      {"<nc:rpc-reply xmlns:nc=\"" + std::string(kNetconfNs) +
           "\"><nc:rpc-error/></nc:rpc-reply>",
       1, "it is NETCONF's answer to a request that failed (<rpc-error>)"},
      {"<!-- only a comment -->", 1, "there is no XML element in it"},
      {"<>", 1, "a tag has no name"},
      {"< a/>", 1, "a tag has no name"},
      {deep_xml, 501, "the elements are nested more than 500 deep"},
      {"{\n\"a\": [", 2, "the document ends before ']'"},
      {"{\n\"a\": ]", 2, "']' closes nothing"},
      {"{\"a\": \"b", 1, "the document ends inside a string"},
      {"{\"a\": \"b\\", 1, "the document ends inside a string"},
      {std::string(600, '{'), 1, "it is nested more than 500 deep"},
      {"{}\n{}", 2, "there is more text behind the JSON object"},
      {"{}\n, {\"a\": 1}", 2, "there is more text behind the JSON object"},
      {"{}\n}", 2, "there is more text behind the JSON object"},
  };
  ExpectErrors(cases);
}

TEST(Unwrap, MalformedTagsAreErrors) {
  const BadCase cases[] = {
      {"<config x></config>", 1, "the attribute \"x\" has no value"},
      {"<config\nx=1/>", 2, "the attribute \"x\" has a value without quotes"},
      {"<config =\n></config>", 1, "unexpected '=' inside a tag"},
      {"<a>\n<b \"=\"></b></a>", 2, "unexpected '\"' inside a tag"},
      {"<a \"=\">", 1, "unexpected '\"' inside a tag"},
      {"<config\nxmlns\"=http://x\">", 2,
       "the attribute \"xmlns\" has no value"},
      {"<a x=\"1\"y=\"2\"/>", 1, "unexpected 'y' inside a tag"},
      {"<a\n x=\"1>\n<b y=\"2\"/>", 2, "the attribute \"x\" has '<'"},
      {"<a/ >", 1, "unexpected '/' inside a tag"},
      {"<a></a\nx=\"1\">", 2, "unexpected 'x' inside a tag"},
      {"<a></a/>", 1, "unexpected '/' inside a tag"},
      {"<a\n=b/>", 2, "unexpected '=' inside a tag"},
      {"<a?/>", 1, "unexpected '?' inside a tag"},
      {"<:a/>", 1, "a tag has no name"},
      {"<1a/>", 1, "a tag has no name"},
      {"<a:/>", 1, "a name ends in a colon"},
      {"<a>\n<b xmlns=\"urn:u\" xmlns:c=\"urn:u\" xmlns=\"urn:u\"/></a>", 2,
       "the attribute \"xmlns\" stands twice in <b>"},
      {"<a:b:c/>", 1, "unexpected ':' inside a tag"},
  };
  ExpectErrors(cases);
}

TEST(Unwrap, MalformedMarkupBetweenTagsIsAnError) {
  const BadCase cases[] = {
      {"<a>\n<?></a>", 2, "a processing instruction has no name"},
      {"<?>\n<a/><?b?>", 1, "a processing instruction has no name"},
      {"<a>\n<? b?></a>", 2, "a processing instruction has no name"},
      {"<a><?b\"c?></a>", 1, "unexpected '\"' in the name of a processing"},
      {"<a/>\n<?xml version=\"1.0\"?>", 2, "the XML declaration stands"},
      {"<?xml?><a/>", 1, "the XML declaration has to hold version"},
      {"<?xml versio=\"1.0\"?><a/>", 1, "the XML declaration has to hold"},
      {"<?xml encoding=\"UTF-8\" version=\"1.0\"?><a/>", 1,
       "the XML declaration has to hold version"},
      {"<?xml version=\"1.0\"encoding=\"UTF-8\"?><a/>", 1,
       "unexpected 'e' in the XML declaration"},
      {"<?xml version=\"1.0\"\n/?><a/>", 2,
       "unexpected '/' in the XML declaration"},
      {"<?xml version=\"1.0\" encoding=\"latin1\"?><a>\xc3\xa4</a>", 1,
       "it is encoded as latin1"},
      {"<a>\n<!--></a>", 2, "the comment is not closed"},
      {"<a>\n<!-- b -- c --></a>", 2, "\"--\" inside a comment"},
      {"<a>\nb]]>c</a>", 2, "\"]]>\" outside of a CDATA section"},
      {"<a/>\n]]>", 2, "\"]]>\" outside of a CDATA section"},
      {"<a>\n&#0;</a>", 2, "\"&#0\" stands for no character"},
      {"<a>&#4294967361;</a>", 1, "\"&#4294967361\" stands for no"},
      {"<a>&#xfffe;</a>", 1, "\"&#xfffe\" stands for no character"},
      {"<a>&#x;</a>", 1, "\"&#x\" stands for no character"},
      {"<a>&#-1;</a>", 1, "\"&#-1\" stands for no character"},
      {"<a>&#65</a>", 1, "\"&#65\" stands for no character"},
      {"<a xmlns:b=\"&#1;\"/>", 1, "\"&#1\" stands for no character"},
  };
  ExpectErrors(cases);
}

TEST(UnwrapJson, WhatStandsBesideAWrapperIsAnError) {
  const BadCase cases[] = {
      {"{\"data\": {},\n\"m:a\": {\"b\": 1}}", 2,
       "\"m:a\" stands beside \"data\""},
      {"{\"data\": {}, \"m:a\": 5}", 1, "\"m:a\" stands beside \"data\""},
      {"{\"m:a\": {},\n\"ietf-restconf:data\": {}}", 1,
       "\"m:a\" stands beside \"ietf-restconf:data\""},
      {"{\"data\": {},\n\"data\": {}}", 2, "\"data\" stands beside \"data\""},
      {"{\"data\": {}\n{} }", 2, "unexpected '{' where ',' or '}' is needed"},
      {"{\"data\": {}\njunk }", 2, "unexpected 'j' where ',' or '}' is needed"},
      {"{\"data\": {},\n}", 2, "unexpected '}' where a member's name"},
  };
  ExpectErrors(cases);
}

TEST(UnwrapJson, MalformedTextIsAnError) {
  const BadCase cases[] = {
      {"{\n,}", 2, "unexpected ',' where a member's name in quotes is needed"},
      {"{\na: 1}", 2,
       "unexpected 'a' where a member's name in quotes is needed"},
      {"{\"a\"\n1}", 2, "unexpected '1' where ':' is needed"},
      {"{\"a\":\n}", 2, "unexpected '}' where a value is needed"},
      {"{\"a\": [1,\n]}", 2, "unexpected ']' where a value is needed"},
      {"{\"a\": [1\n2]}", 2, "unexpected '2' where ',' or ']' is needed"},
      {"{\"a\": 1\n\"b\": 2}", 2, "unexpected '\"' where ',' or '}' is needed"},
      {"{\"a\":\ntrua}", 2, "unexpected 't' where a value is needed"},
      {"{\"a\":\nnullx}", 2, "unexpected 'x' where ',' or '}' is needed"},
      {"{\"a\":\n01}", 2, "unexpected '1' where ',' or '}' is needed"},
      {"{\"a\":\n-}", 2, "unexpected '}' where a digit is needed"},
      {"{\"a\":\n€}", 2, "unexpected '€' where a value is needed"},
      {"{\"a\": 1.\n}", 1, "unexpected the end of the line where a digit"},
      {"{\"a\": 1e+}", 1, "unexpected '}' where a digit is needed"},
      {"{\"a\": +1}", 1, "unexpected '+' where a value is needed"},
      {"{\"a\":\n\"b\nc\"}", 2, "a string is not closed in its line"},
      {"{\"a\":\n\"\\x\"}", 2, "a backslash begins no escape sequence"},
      {"{\"a\":\n\"\\u00g0\"}", 2, "unexpected 'g' where a digit"},
      {"{\"a\":\n\"\\u00\"}", 2, "unexpected '\"' where a digit"},
      {"{\"a\":\n\"\\ud83d\"}", 2, "half of a surrogate pair stands alone"},
      {"{\"a\":\n\"\\ud83dx\"}", 2, "half of a surrogate pair stands alone"},
      {"{\"a\":\n\"\\ud83d\\n\"}", 2, "half of a surrogate pair stands"},
      {"{\"a\":\n\"\\ud83d\\ud83d\"}", 2, "half of a surrogate pair stands"},
      {"{\"a\":\n\"\\ude00\"}", 2, "half of a surrogate pair stands alone"},
      {"{\"a\":\n\"\\ude00\\ud83d\"}", 2, "half of a surrogate pair stands"},
      {"{\"a\":\n\"\\ud83d\\ude0\"}", 2, "unexpected '\"' where a digit"},
      {"{\"a\": {\n\"@b\": {}}}", 2, "the metadata \"@b\" can't be kept"},
      {"{\n\"@\": {\"m:c\": 1}}", 2, "the metadata \"@\" can't be kept"},
  };
  ExpectErrors(cases);
}

TEST(UnwrapJson, TakesEveryForm) {
  std::string text =
      " {\n\"a\" : [ ] , \"b\":{},\"c\":[{},[1,-0.5e+10,0],\"\"],\"d\":true,"
      "\"e\":false,\"f\":null,\"\\\"\\\\\\/\\b\\u00fF\":\"@\"} ";
  const std::string same = text;
  EXPECT_NO_THROW(Unwrap(text));
  EXPECT_EQ(text, same);
}

TEST(UnwrapJson, WritesSurrogatePairsAsTheCharacterTheyStandFor) {
  std::string text =
      "{\"data\": "
      "{\"\\uD800\\uDC00\":\n\"a\\\\\\ud83d\\ude00b\\uDBFF\\udfff\"}}";
  Unwrap(text);
  EXPECT_EQ(Squeezed(text),
            "{\"\xf0\x90\x80\x80\":\n\"a\\\\\xf0\x9f\x98\x80"
            "b\xf4\x8f\xbf\xbf\"}");
}

TEST(Unwrap, MetadataIsAnError) {
  const BadCase cases[] = {
      {"<a xmlns=\"urn:u\"\nxmlns:nc=\"" + std::string(kNetconfNs) +
           "\">\n<b nc:operation=\"delete\"/></a>",
       3, "the attribute \"nc:operation\" of <b> can't be kept"},
      {"<nc:config xmlns:nc=\"" + std::string(kNetconfNs) +
           "\">\n<a nc:operation=\"delete\"/></nc:config>",
       2, "the attribute \"nc:operation\" of <a> can't be kept"},
      {"<config" + Xmlns(kNetconfNs) + "\nxmlns:nc=\"" + kNetconfNs +
           "\" nc:operation=\"replace\"><a/></config>",
       2, "the attribute \"nc:operation\" of <config> can't be kept"},
      {"<data" + Xmlns(kNetconfNs) + " operation=\"remove\"><a/></data>", 1,
       "the attribute \"operation\" of <data> can't be kept"},
      {"<a><b\nxml:lang=\"en\"/></a>", 2,
       "the attribute \"xml:lang\" of <b> can't be kept"},
      {"<a\nxmlnsx=\"en\"/>", 2, "the attribute \"xmlnsx\" of <a>"},
  };
  ExpectErrors(cases);
}

TEST(Unwrap, BytesThatAreNoTextAreErrors) {
  const BadCase cases[] = {
      {"<a>\n\xff</a>", 2, "it holds bytes that are no UTF-8 text"},
      // A byte of two, one character in too many bytes, half of a pair.
      {"<a>\n<!-- \xc3 -->\n</a>", 2, "it holds bytes that are no UTF-8"},
      {"<a>\n\n\xf0\x80\x80\xaf</a>", 3, "it holds bytes that are no UTF-8"},
      {"{\"a\":\n\"\xed\xa0\x80\"}", 2, "it holds bytes that are no UTF-8"},
      {"<a x=\"\x01\"/>", 1, "it holds bytes that are no UTF-8 text"},
  };
  ExpectErrors(cases);
}

TEST(Unwrap, OtherEncodingsAreNamedWithTheCommandThatConverts) {
  const BadCase cases[] = {
      {std::string("\xff\xfe<\0a\0/\0>\0", 10), 1,
       "it is in UTF-16, not in UTF-8; this converts it: iconv -f UTF-16 -t "
       "UTF-8 OLD > NEW"},
      {std::string("\xfe\xff\0<\0a", 6), 1, "it is in UTF-16, "},
      {std::string("\xff\xfe\0\0<\0\0\0", 8), 1, "it is in UTF-32, "},
      {std::string("\0\0\xfe\xff\0\0\0<", 8), 1, "it is in UTF-32, "},
      {std::string("<\0a\0/\0>\0", 8), 1, "it is in UTF-16LE, "},
      {std::string("\0{\0\"\0a", 6), 1, "it is in UTF-16BE, "},
      {"<?xml version=\"1.0\" encoding='ISO-8859-1'?>\n<a>\xe9</a>", 2,
       "it is in ISO-8859-1, not in UTF-8; this converts it: iconv -f "
       "ISO-8859-1 -t UTF-8 OLD > NEW"},
      // What is no name of an encoding is no part of a command.
      {"<?xml version=\"1.0\" encoding=\"a; b\"?>\n<a>\xe9</a>", 2,
       "it holds bytes that are no UTF-8 text"},
      {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>\xe9</a>", 2,
       "it holds bytes that are no UTF-8 text"},
      {"<?xml encoding=", 1, "the processing instruction is not closed"},
      {"<a>encoding=\"x\"\xe9</a>", 1, "it holds bytes that are no UTF-8"},
  };
  ExpectErrors(cases);
  // The declaration is not the text.
  std::string ascii = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a/>";
  EXPECT_EQ(Unwrap(ascii).syntax, Syntax::kXml);
}

TEST(Unwrap, TakesMarkupOfEveryKind) {
  const char* texts[] = {
      "<?xml version=\"1.0\" encoding=\"utf-8\" standalone='no' ?><a/>",
      "\n<?xml version='1.0'?>\n<a/>",
      "<?xml version=\"1.0\" encoding=\"latin1\"?><a/>",
      "\xef\xbb\xbf<?xml version=\"1.0\"?><a/>",
      "<a><!----></a><!--></b>--><!---></b>--><!-- - -->",
      "<a><?b?><?b c?><?xml-model d=\"?>\"?></a>",
      "<a><![CDATA[]]]]><![CDATA[>&#0;]]>&#xD;&#10;&#x10FFFF;</a>",
  };
  for (std::string text : texts) EXPECT_NO_THROW(Unwrap(text)) << text;
}

// Every cut of a valid document is an error or a document, never a crash.
TEST(Unwrap, TruncatedDocumentsAreErrors) {
  const std::string whole =
      "<?xml version=\"1.0\"?><config" + Xmlns(kConfigNs) +
      " xmlns:p=\"urn:p\"><!-- c --><p:a xmlns:x='1'><![CDATA[x]]></p:a>"
      "</config>";
  for (size_t length = 0; length < whole.size(); ++length) {
    std::string text = whole.substr(0, length);
    EXPECT_THROW(Unwrap(text), EnvelopeError) << text;
  }
  std::string text = whole;
  EXPECT_NO_THROW(Unwrap(text));
}

TEST(Envelope, OpeningAndClosingFit) {
  for (Wrapping wrapping : {Wrapping::kConfig, Wrapping::kNetconf}) {
    Envelope envelope{Syntax::kXml, wrapping};
    std::string text(Opening(envelope));
    text += "<a/>";
    text += Closing(envelope);
    Envelope read = Unwrap(text);
    EXPECT_EQ(read.wrapping, wrapping);
  }
  EXPECT_EQ(Opening({Syntax::kXml, Wrapping::kNone}), "");
  EXPECT_EQ(Closing({Syntax::kXml, Wrapping::kNone}), "");
}

}  // namespace
}  // namespace kit::store
