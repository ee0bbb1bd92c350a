#pragma once

// The files of the sample machine.

namespace app::sample {

inline constexpr char kMachine[] = R"(; What a Windows machine knows by itself.

[Machine]
User=tanaka

[Accounts]
tanaka=田中 太郎

[Printer 会議室プリンタ]
Driver=QuietMIMOSA Harbor Ledge Driver
Comment=2F 会議室

[Printer 受付プリンタ]
Driver=QuietMIMOSA Harbor Ledge Driver

[Printer 経理部複合機]
Driver=Generic PCL6
Comment=3F 経理部 [監視対象プリンタ]

[Printer 営業部プリンタ]
Driver=Generic PCL6
Comment=1F 営業部

[Printer Label Printer]
Driver=Generic Label
Comment=Warehouse

[Printer PDF Writer]
Driver=Generic PDF
)";

inline constexpr char kClientIni[] =
    "[Setting]\r\nEMSDir=C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\EMS\r\n";

// 32 bytes: every digit of the digest goes into the key.
inline constexpr char kKeySource[] = "sample key source of a test host";

inline constexpr char kSystemSetting[] = "63,1\r\n500,0\r\n";

inline constexpr char kPolicy[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<QuietMIMOSA>
  <HLE Version="1.0">
    <Watermark>
      <PolicyInfos>
        <PolicyInfo ID="1">
          <PrinterScope>0</PrinterScope>
          <ElementIDs>
            <ID>E1</ID>
            <ID>E2</ID>
            <ID>E3</ID>
            <ID>E4</ID>
            <ID>E5</ID>
          </ElementIDs>
        </PolicyInfo>
      </PolicyInfos>
      <Elements>
        <Element ID="E1">
          <Kind>0</Kind>
          <Name>ヘッダー</Name>
          <Text>社外秘</Text>
          <FontSize>14</FontSize>
          <FontName>MS ゴシック</FontName>
          <Color>0xFF0000</Color>
          <Bold>1</Bold>
          <Opacity>80</Opacity>
          <PrintPos>2</PrintPos>
          <YOffset>5.5</YOffset>
        </Element>
        <Element ID="E2">
          <Kind>0</Kind>
          <Name>フッター</Name>
          <Text>複製を禁じます</Text>
          <FontSize>9</FontSize>
          <FontName>MS 明朝</FontName>
          <Opacity>100</Opacity>
          <PrintPos>6</PrintPos>
          <XOffset>-10</XOffset>
          <YOffset>-5</YOffset>
        </Element>
        <Element ID="E3">
          <Kind>1</Kind>
          <Name>印刷者</Name>
          <Text>{WinUser} が印刷</Text>
          <FontSize>48</FontSize>
          <FontName>MS ゴシック</FontName>
          <Color>0x808080</Color>
          <Fit>1</Fit>
          <Opacity>30</Opacity>
          <Rotate>45</Rotate>
        </Element>
        <Element ID="E4">
          <Kind>1</Kind>
          <Name>地紋</Name>
          <Text>COPY</Text>
          <FontSize>24</FontSize>
          <FontName>Arial</FontName>
          <Color>12632256</Color>
          <Italic>1</Italic>
          <Opacity>15</Opacity>
          <Rotate>30</Rotate>
          <RepeatType>3</RepeatType>
          <RepeatHSpace>40</RepeatHSpace>
          <RepeatVSpace>60</RepeatVSpace>
        </Element>
        <Element ID="E5">
          <Kind>7</Kind>
          <Name>未知の種類</Name>
          <Text>この要素は登録されません</Text>
        </Element>
      </Elements>
    </Watermark>
  </HLE>
</QuietMIMOSA>
)";

}  // namespace app::sample
