#include "app/intake/Languages.h"

#include "support/base/Collections.h"

#include <QLocale>

namespace languages {

namespace {

/// ISO 639-1 and the bibliographic codes of ISO 639-2. Qt's tables map some codes to other languages: "no" to
/// Bokmål and "tw" to Akan.
constexpr QLatin1String kCodes(
    "aa=aar ab=abk ae=ave af=afr ak=aka am=amh an=arg ar=ara as=asm av=ava ay=aym az=aze ba=bak be=bel bg=bul bh=bih bi=bis bm=bam bn=ben bo=tib br=bre bs=bos ca=cat ce=che ch=cha co=cos cr=cre cs=cze cu=chu cv=chv cy=wel da=dan de=ger dv=div dz=dzo ee=ewe el=gre en=eng eo=epo es=spa et=est eu=baq fa=per ff=ful fi=fin fj=fij fo=fao fr=fre fy=fry ga=gle gd=gla gl=glg gn=grn gu=guj gv=glv ha=hau he=heb hi=hin ho=hmo hr=hrv ht=hat hu=hun hy=arm hz=her ia=ina id=ind ie=ile ig=ibo ii=iii ik=ipk io=ido is=ice it=ita iu=iku ja=jpn jv=jav ka=geo kg=kon ki=kik kj=kua kk=kaz kl=kal km=khm kn=kan ko=kor kr=kau ks=kas ku=kur kv=kom kw=cor ky=kir la=lat lb=ltz lg=lug li=lim ln=lin lo=lao lt=lit lu=lub lv=lav mg=mlg mh=mah mi=mao mk=mac ml=mal mn=mon mr=mar ms=may mt=mlt my=bur na=nau nb=nob nd=nde ne=nep ng=ndo nl=dut nn=nno no=nor nr=nbl nv=nav ny=nya oc=oci oj=oji om=orm or=ori os=oss pa=pan pi=pli pl=pol ps=pus pt=por qu=que rm=roh rn=run ro=rum ru=rus rw=kin sa=san sc=srd sd=snd se=sme sg=sag si=sin sk=slo sl=slv sm=smo sn=sna so=som sq=alb sr=srp ss=ssw st=sot su=sun sv=swe sw=swa ta=tam te=tel tg=tgk th=tha ti=tir tk=tuk tl=tgl tn=tsn to=ton tr=tur ts=tso tt=tat tw=twi ty=tah ug=uig uk=ukr ur=urd uz=uzb ve=ven vi=vie vo=vol wa=wln wo=wol xh=xho yi=yid yo=yor za=zha zh=chi zu=zul ");

/// Empty: not found.
QString threeLetterCode(const QString& twoLetterCode) {
    if (twoLetterCode.size() != 2) return {};
    const qsizetype at = kCodes.indexOf(QString(twoLetterCode + u'='));
    return at < 0 ? QString() : QString(kCodes.mid(at + 3, 3));
}

QString languageCode(const QString& identifier) {
    const qsizetype end = identifier.indexOf(u'-');
    const qsizetype other = identifier.indexOf(u'_');
    return identifier.left(end < 0 ? other : end);
}

}  // namespace

QStringList threeLetterCodes(const QStringList& identifiers) {
    QStringList codes;
    for (const QString& identifier : identifiers) {
        QString code = threeLetterCode(identifier);
        if (code.isEmpty()) code = threeLetterCode(languageCode(identifier));
        codes.append(code.isEmpty() ? identifier : code);
    }
    return codes;
}

QStringList twoLetterCodes(const QStringList& identifiers) {
    QStringList codes;
    for (const QString& identifier : identifiers)
        codes.append(languageCode(identifier));
    return codes;
}

QStringList preferredLanguages3Letter() {
    // The system lists several identifiers for each language, such as "de", "de-DE" and "de-Latn-DE".
    return collections::withoutDuplicates(threeLetterCodes(QLocale::system().uiLanguages()));
}

const QStringList& preferredLanguages2Letter() {
    static const QStringList codes = twoLetterCodes(QLocale::system().uiLanguages());
    return codes;
}

}  // namespace languages
